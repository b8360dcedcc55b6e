#include "shot_scenes.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QEventLoop>
#include <QLineEdit>
#include <QMenuBar>
#include <QTimer>
#include <cstdio>

#include "docview/commands/command_ids.h"
#include "listview/rows/trace_view.h"
#include "palette.h"
#include "render.h"
#include "shell/mdi/ui/child_window.h"
#include "shell/tessera_app.h"
#include "shell/ui/load_status_face.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/qt_shell_faces.h"
#include "tree/find/find_dialog.h"

namespace {

constexpr int kSettleMs = 120;

QtMainFrame& FaceOf(CTesseraApp& tessera) {
  return static_cast<QtMainFrame&>(*tessera.Frame()->Face());
}

CTraceView* FrontList(CTesseraApp& tessera) {
  CMDIChildWnd* child = tessera.Frame()->MDIGetActive();
  return child ? dynamic_cast<CTraceView*>(child->GetActiveView()) : nullptr;
}

}  // namespace

ShotScenes::ShotScenes(CTesseraApp& tessera, QtShellFaces& faces, QString folder)
    : m_tessera(tessera), m_faces(faces), m_folder(std::move(folder)) {}

QWidget& ShotScenes::Window() {
  return FaceOf(m_tessera).Window();
}

void ShotScenes::Settle() {
  QEventLoop loop;
  QTimer::singleShot(kSettleMs, &loop, &QEventLoop::quit);
  loop.exec();
  FaceOf(m_tessera).Actions().UpdateAll();
}

void ShotScenes::Save(QWidget& widget, const QString& name) {
  const QString path =
      m_folder + QLatin1Char('/') + name + m_mark + QLatin1String(m_dark ? "-dark.png" : ".png");
  if (widget.grab().save(path, "PNG")) return;
  std::fprintf(stderr, "tessera-shots: cannot write %s\n", qUtf8Printable(path));
  m_good = false;
}

void ShotScenes::UseDark() {
  m_dark = true;
  UseFusion(true);
  Settle();
}

void ShotScenes::Empty() {
  Settle();
  Save(Window(), QStringLiteral("main-empty"));
}

void ShotScenes::File(const std::string& path) {
  if (!m_tessera.OpenDocumentFile(path) || !WaitForLoads(m_tessera)) {
    std::fprintf(stderr, "tessera-shots: cannot open %s\n", path.c_str());
    m_good = false;
    return;
  }
  m_tessera.Frame()->OnCommand(ID_WINDOW_CASCADE);
  if (CTraceView* list = FrontList(m_tessera)) {
    const int row = list->List().ItemCount() / 2;
    list->List().EnsureVisible(row);
    list->List().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }
  Settle();
  Save(Window(), QStringLiteral("main-file"));
}

// A menu is a separate window: painted at its position over the main window.
void ShotScenes::Menu() {
  for (const QAction* title : FaceOf(m_tessera).Window().menuBar()->actions()) {
    const QString text = title->text().remove(QLatin1Char('&'));
    SaveMenu(text, QStringLiteral("menu-") + text.toLower());
  }
}

void ShotScenes::SaveMenu(const QString& title, const QString& name) {
  for (const QAction* action : FaceOf(m_tessera).Window().menuBar()->actions()) {
    if (action->text().remove(QLatin1Char('&')) != title) continue;
    QMenu& menu = *action->menu();
    menu.popup(Window().mapToGlobal(QPoint(0, 0)));
    Settle();
    Save(menu, name);
    menu.close();
  }
}

void ShotScenes::PopUp() {
  QTimer::singleShot(kSettleMs, &Window(), [this] {
    QWidget* menu = QApplication::activePopupWidget();
    if (!menu) return;
    Save(*menu, QStringLiteral("popup"));
    menu->close();
  });
  FaceOf(m_tessera).TrackPopupMenu(IDR_TRACE_POPUP, 10, 10, {});
}

void ShotScenes::Maximised() {
  FaceOf(m_tessera).Area().Active()->showMaximized();
  Settle();
  Save(Window(), QStringLiteral("main-maximised"));
  FaceOf(m_tessera).Area().Active()->showNormal();
}

void ShotScenes::Hits(const QString& name) {
  Answer([](QWidget& dialog) {
    dialog.findChild<QCheckBox*>(QString::number(CFindDialog::kRegularExpression))
        ->setChecked(true);
    dialog.findChild<QLineEdit*>()->setText(QStringLiteral("[0-9]+"));
    static_cast<QDialog&>(dialog).accept();
  });
  m_tessera.Frame()->OnCommand(ID_EDIT_FIND);
  Settle();
  Save(Window(), name);
}

void ShotScenes::Tiled(const std::string& second) {
  m_tessera.OpenDocumentFile(second);
  WaitForLoads(m_tessera);
  m_tessera.Frame()->OnCommand(ID_WINDOW_TILE_HORZ);
  Settle();
  Save(Window(), QStringLiteral("main-tiled"));
}

void ShotScenes::Answer(std::function<void(QWidget&)> act) {
  QTimer::singleShot(kSettleMs, &Window(), [act = std::move(act)] {
    if (QWidget* dialog = QApplication::activeModalWidget()) act(*dialog);
  });
}

void ShotScenes::SaveModal(unsigned command, const QString& name) {
  Answer([this, name](QWidget& dialog) {
    Save(dialog, name);
    dialog.close();
  });
  m_tessera.Frame()->OnCommand(command);
}

void ShotScenes::Options() {
  SaveModal(ID_VIEW_OPTIONS, QStringLiteral("options"));
}

void ShotScenes::About() {
  SaveModal(ID_APP_ABOUT, QStringLiteral("about"));
}

void ShotScenes::Help(const QStringList& topics) {
  for (const QString& topic : topics) {
    m_faces.ShowHelp(topic.toStdString());
    Settle();
    Save(*m_faces.Help(), QStringLiteral("help-") + topic);
  }
  m_faces.Help()->close();
}

void ShotScenes::Progress(const std::string& path) {
  CLoadStatus status(m_tessera.GetHost(), CreateEvent());
  status.SetCaption("Loading...");
  status.SetUp(path, 1000);
  status.SetPosition(420);
  Settle();
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (dynamic_cast<LoadStatusFace*>(widget) && widget->isVisible())
      Save(*widget, QStringLiteral("progress"));
  }
}
