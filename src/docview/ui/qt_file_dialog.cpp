#include "docview/ui/qt_file_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QSplitter>
#include <QTreeView>
#include <algorithm>

#include "docview/dialogs/file_name.h"
#include "docview/ui/dialog_parts.h"
#include "docview/ui/plain_tool_tip.h"
#include "docview/ui/screen_fit.h"

namespace {

constexpr int kWidthPx = 720, kHeightPx = 460;
constexpr int kSideBarMarginPx = 24;
constexpr int kNameLettersLeast = 20;

// Qt's own provider reads files to determine their kind, and would block the dialog on a FIFO.
class UnreadFiles final : public QFileIconProvider {
 public:
  QIcon icon(IconType type) const override { return QFileIconProvider::icon(type); }
  QIcon icon(const QFileInfo& file) const override {
    return QFileIconProvider::icon(file.isDir() ? Folder : File);
  }
  QString type(const QFileInfo& file) const override {
    if (file.isDir()) return QFileDialog::tr("Folder");
    const QString suffix = file.suffix();
    return suffix.isEmpty() ? QFileDialog::tr("File") : QFileDialog::tr("%1 File").arg(suffix);
  }
};

// The dialog's thread uses it until the dialog is destroyed.
UnreadFiles& Icons() {
  static UnreadFiles icons;
  return icons;
}

// Qt takes the patterns from the last parentheses, separated by blanks, and removes those when it
// shows the filter; the label may have parentheses of its own.
QString NameFilter(const FileFilter& filter) {
  const QString patterns = QString::fromStdString(filter.patterns);
  QStringList parts;
  for (const QString& pattern : patterns.split(u';', Qt::SkipEmptyParts))
    parts.append(pattern.trimmed());
  return QString::fromStdString(filter.label) + QLatin1String(" (") + parts.join(u' ') + u')';
}

}  // namespace

QtFileDialog::QtFileDialog(const FileDialogRequest& request, QWidget* parent)
    : QFileDialog(parent, QString::fromStdString(request.title)), m_request(request) {
  setOption(DontUseNativeDialog);
  setOption(HideNameFilterDetails);
  setIconProvider(&Icons());
  setAcceptMode(request.save ? AcceptSave : AcceptOpen);
  setFileMode(request.save ? AnyFile : ExistingFile);
  QStringList filters;
  for (const FileFilter& filter : request.filters) filters.append(NameFilter(filter));
  if (!filters.isEmpty()) setNameFilters(filters);

  const QFileInfo suggested(QString::fromStdString(request.suggestedName));
  const bool hasFolder = !request.suggestedName.empty() && suggested.dir().exists();
  setDirectory(hasFolder ? suggested.absolutePath() : QDir::currentPath());
  if (!suggested.fileName().isEmpty()) selectFile(suggested.fileName());
  AddBoxes(request.boxes);
  AddNote(request.note);
  WidenColumns();
  WidenSideBar();
}

// By default the columns cut sizes and dates.
void QtFileDialog::WidenColumns() {
  m_files = findChild<QTreeView*>(QStringLiteral("treeView"));
  if (!m_files) return;
  QHeaderView& header = *m_files->header();
  header.setSectionResizeMode(QHeaderView::ResizeToContents);
  header.setSectionResizeMode(0, QHeaderView::Stretch);
  header.setStretchLastSection(false);
  m_files->viewport()->installEventFilter(this);
  connect(&header, &QHeaderView::sectionResized, this, [this](int column) {
    if (column != 0) FitNames();
  });
  const QSize wanted = size().expandedTo(QSize(kWidthPx, kHeightPx));
  resize(wanted.boundedTo(ScreenRoom(*this).size() * 9 / 10));
}

// Names get the rest of the width, but at least a readable width: then the list scrolls.
void QtFileDialog::FitNames() {
  QHeaderView& header = *m_files->header();
  const int least = m_files->fontMetrics().averageCharWidth() * kNameLettersLeast;
  const int left = m_files->viewport()->width() - (header.length() - header.sectionSize(0));
  const auto mode = left < least ? QHeaderView::Interactive : QHeaderView::Stretch;
  if (header.sectionResizeMode(0) != mode) header.setSectionResizeMode(0, mode);
  if (left < least) header.resizeSection(0, least);
}

bool QtFileDialog::eventFilter(QObject* watched, QEvent* event) {
  const bool handled = QFileDialog::eventFilter(watched, event);
  if (m_files && watched == m_files->viewport() && event->type() == QEvent::Resize) FitNames();
  return handled;
}

// By default the side bar cuts the names of the places.
void QtFileDialog::WidenSideBar() {
  const auto* const places = findChild<QListView*>(QStringLiteral("sidebar"));
  auto* const parts = findChild<QSplitter*>(QStringLiteral("splitter"));
  if (!places || !parts) return;
  const int bar = places->sizeHintForColumn(0) + kSideBarMarginPx;
  parts->setSizes({bar, std::max(width() - bar, bar)});
}

void QtFileDialog::AddBoxes(const std::vector<FileDialogBox>& boxes) {
  auto* grid = qobject_cast<QGridLayout*>(layout());
  if (!grid || boxes.empty()) return;
  auto* row = new QHBoxLayout;
  row->setSpacing(18);
  for (const FileDialogBox& box : boxes) {
    auto* check = new QCheckBox(QString::fromStdString(box.text), this);
    check->setEnabled(box.enabled);
    check->setChecked(box.checked);
    row->addWidget(check);
    m_boxes.push_back(check);
  }
  row->addStretch(1);
  grid->addLayout(row, grid->rowCount(), 1, 1, grid->columnCount() - 1);
}

// The rows of Qt's grid have fixed positions, so the note is placed where a menu bar would be.
void QtFileDialog::AddNote(const FileDialogNote& note) {
  if (note.text.empty()) return;
  auto* above = new QWidget(this);
  auto* label = new QLabel(QString::fromStdString(note.label), above);
  auto* field = new QLineEdit(QString::fromStdString(note.text), above);
  field->setObjectName(QStringLiteral("note"));
  field->setReadOnly(true);
  field->setCursorPosition(0);
  field->setAccessibleName(AccessibleName(QString::fromStdString(note.label)));
  SetPlainToolTip(*field, QString::fromStdString(note.text));
  label->setBuddy(field);
  auto* row = new QHBoxLayout(above);
  const QMargins around = layout()->contentsMargins();
  row->setContentsMargins(around.left(), around.top(), around.right(), 0);
  row->addWidget(label);
  row->addWidget(field, 1);
  layout()->setMenuBar(above);
}

FileDialogAnswer QtFileDialog::Answer() const {
  FileDialogAnswer answer;
  answer.path = QFileInfo(selectedFiles().value(0)).absoluteFilePath().toStdString();
  for (const QCheckBox* box : m_boxes) answer.boxes.push_back(box->isChecked());
  return answer;
}

// The name in the field counts. A file that is still selected in the list would take precedence
// over it, and a selected folder would be opened.
void QtFileDialog::CompleteName() {
  auto* field = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  auto* files = findChild<QListView*>(QStringLiteral("listView"));
  if (!field || !files || QFileInfo(selectedFiles().value(0)).isDir()) return;
  files->selectionModel()->clear();
  const QFileInfo chosen(selectedFiles().value(0));
  if (chosen.fileName().isEmpty() || chosen.isDir()) return;
  const auto* types = findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
  const auto filter = static_cast<std::size_t>(types ? std::max(types->currentIndex(), 0) : 0);
  const QFileInfo named(QString::fromStdString(
      WithDefaultExtension(chosen.absoluteFilePath().toStdString(), m_request, filter)));
  if (named.absoluteFilePath() == chosen.absoluteFilePath()) return;
  const bool here = named.absolutePath() == directory().absolutePath();
  field->setText(here ? named.fileName() : named.absoluteFilePath());
}

// A folder that cannot be entered would not become the current one, and a file that is made by its
// bare name would be made in another one.
bool QtFileDialog::FolderMayBeUsed() {
  const QFileInfo chosen(selectedFiles().value(0));
  if (chosen.fileName().isEmpty()) return true;
  const QFileInfo folder(chosen.absolutePath());
  const char* const wrong = !folder.isDir()          ? "\nThe folder does not exist."
                            : !folder.isExecutable() ? "\nThe folder cannot be entered."
                                                     : nullptr;
  if (wrong) QMessageBox::warning(this, windowTitle(), folder.filePath() + wrong);
  return !wrong;
}

void QtFileDialog::accept() {
  if (acceptMode() == AcceptSave) {
    CompleteName();
    if (!FolderMayBeUsed()) return;
  }
  QFileDialog::accept();
}
