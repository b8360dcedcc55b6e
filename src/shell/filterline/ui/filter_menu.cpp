#include "shell/filterline/ui/filter_menu.h"

#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>

#include "base/text.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

constexpr int kWidestItemChars = 60;

// As the text of an item: ampersands are no access keys.
QString ItemText(const std::string& text, const QFontMetrics& metrics) {
  QString shown = QString::fromStdString(ReplaceMalformed(text)).simplified();
  shown = metrics.elidedText(shown, Qt::ElideRight, metrics.averageCharWidth() * kWidestItemChars);
  return shown.replace(QLatin1Char('&'), QLatin1String("&&"));
}

}  // namespace

FilterMenu::FilterMenu(FilterLine& line, QWidget* parent)
    : QPushButton(parent), m_line(&line), m_menu(new QMenu(this)) {
  setObjectName(QStringLiteral("filters"));
  setText(QStringLiteral("Filters"));
  setAccessibleName(QStringLiteral("Recent and saved filters"));
  setToolTip(QStringLiteral("Recent and saved filters"));
  setAutoDefault(false);
  setFocusPolicy(Qt::TabFocus);
  m_menu->setToolTipsVisible(true);
  setMenu(m_menu);
  connect(m_menu, &QMenu::aboutToShow, this, [this] { Fill(); });
}

void FilterMenu::Fill() {
  m_menu->clear();
  if (!m_line) return;
  FillRecent();
  FillSaved();
  AddSource();
}

void FilterMenu::FillRecent() {
  QMenu* const recent = m_menu->addMenu(QStringLiteral("&Recent"));
  for (const std::string& text : RecentFilters())
    recent->addAction(ItemText(text, fontMetrics()), this, [this, text] { Apply(text); });
  recent->setEnabled(!recent->isEmpty());
}

void FilterMenu::FillSaved() {
  const std::vector<SavedFilter> saved = ReadSavedFilters();
  m_menu->addSeparator();
  for (const SavedFilter& filter : saved) {
    QAction* const item = m_menu->addAction(ItemText(filter.name, fontMetrics()), this,
                                            [this, text = filter.text] { Apply(text); });
    item->setToolTip(ItemText(filter.text, fontMetrics()));
  }
  m_menu->addSeparator();
  QAction* const save =
      m_menu->addAction(QStringLiteral("&Save As..."), this, [this] { SaveAs(); });
  save->setEnabled(m_line->CanBeSaved());
  AddOpenAsTree();
  QMenu* const remove = m_menu->addMenu(QStringLiteral("&Delete"));
  for (const SavedFilter& filter : saved)
    remove->addAction(ItemText(filter.name, fontMetrics()), this,
                      [name = filter.name] { DeleteSavedFilter(name); });
  remove->setEnabled(!saved.empty());
}

void FilterMenu::AddSource() {
  const std::string why = m_line->AtSource().WhyNot();
  const QString name = QStringLiteral("At the Sour&ce");
  m_menu->addSeparator();
  QAction* const item = m_menu->addAction(
      why.empty() ? name : name + QStringLiteral(" (%1)").arg(QString::fromStdString(why)));
  item->setCheckable(true);
  item->setChecked(m_line->AtSource().IsOn());
  item->setEnabled(why.empty());
  connect(item, &QAction::toggled, this, [this](bool on) {
    if (m_line) m_line->SetAtSource(on);
  });
}

void FilterMenu::AddOpenAsTree() {
  QAction* const open = m_menu->addAction(QStringLiteral("Open in Filter Dialo&g..."), this,
                                          [this] { OpenAsTree(); });
  const QString whyNot = QString::fromStdString(ReplaceMalformed(m_line->WhyNoTree()));
  open->setEnabled(whyNot.isEmpty());
  open->setToolTip(PlainToolTip(
      whyNot.isEmpty() ? QStringLiteral("Show the same traces by the tree of the filter dialog")
                       : whyNot));
}

// The window may go while the dialog is open.
void FilterMenu::OpenAsTree() {
  std::string why;
  const QPointer<QWidget> owner(window());
  if (!m_line || m_line->OpenAsTree(&why) || !owner) return;
  QMessageBox::information(owner, QStringLiteral("Tessera"),
                           QString::fromStdString(ReplaceMalformed(why)));
}

void FilterMenu::Apply(const std::string& text) {
  if (m_line) m_line->ApplyText(text);
}

// The window may go while the dialog is open.
void FilterMenu::SaveAs() {
  if (!m_line) return;
  const std::string text = m_line->Text();
  const QPointer<FilterMenu> alive(this);
  QInputDialog dialog(window());
  dialog.setObjectName(QStringLiteral("save filter"));
  dialog.setWindowTitle(QStringLiteral("Save Filter"));
  dialog.setLabelText(QStringLiteral("Name of the filter:"));
  if (dialog.exec() != QDialog::Accepted || !alive) return;
  std::string why;
  if (!SaveFilter(dialog.textValue().toStdString(), text, &why))
    QMessageBox::warning(window(), QStringLiteral("Tessera"), QString::fromStdString(why));
}
