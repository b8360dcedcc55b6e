#include "shell/ui/qt_shell_faces.h"

#include <QApplication>
#include <QPageSetupDialog>
#include <QScreen>

#include "config/pages/ui/config_sheet_face.h"
#include "config/traces/ui/modify_trace_face.h"
#include "config/ui/machine_face.h"
#include "config/view/ui/add_app_face.h"
#include "config/view/ui/config_pane_widget.h"
#include "controls/tree/ui/tree_widget.h"
#include "docview/ui/work_box_face.h"
#include "listview/columns/options_dialog.h"
#include "listview/columns/ui/options_face.h"
#include "listview/details/ui/trace_detail_face.h"
#include "listview/rows/ui/trace_rows.h"
#include "listview/source/ui/find_text_face.h"
#include "listview/source/ui/locate_wait_face.h"
#include "listview/source/ui/rich_edit_widget.h"
#include "overview/window/ui/overview_widget.h"
#include "shell/beside/ui/beside_area_widget.h"
#include "shell/colours/ui/colour_rules_face.h"
#include "shell/details/ui/details_widget.h"
#include "shell/filterline/ui/filter_line_widget.h"
#include "shell/goto/ui/go_to_face.h"
#include "shell/load_status.h"
#include "shell/marks/ui/note_face.h"
#include "shell/ui/about_box.h"
#include "shell/ui/load_status_face.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/stored_places.h"
#include "shell/views/ui/profiles_face.h"
#include "statistics/window/ui/statistics_face.h"
#include "tree/filter/ui/filter_face.h"
#include "tree/find/ui/find_face.h"
#include "wizard/ui/trace_wizard_face.h"

namespace {

QSize PrimaryRoom() {
  const QScreen* const screen = QGuiApplication::primaryScreen();
  return screen ? screen->availableSize() : QSize(1280, 800);
}

}  // namespace

QtShellFaces::QtShellFaces(QtHost& host, std::function<void()> closed)
    : m_host(host), m_closed(std::move(closed)) {
  host.SetPlaces(std::make_unique<StoredPlaces>());
  host.RegisterFace<CLoadStatus, LoadStatusFace>();
  host.RegisterFace<COptionsDlg, OptionsFace>();
  host.RegisterFace<CMachineDlg, MachineFace>();
  host.RegisterFace<CMachineBrowser, MachineBrowserFace>();
  host.RegisterFace<CConfigPropertySheet, ConfigSheetFace>();
  host.RegisterFace<CModifyTraceDialog, ModifyTraceFace>();
  host.RegisterFace<CAddAppDialog, AddAppFace>();
  host.RegisterFace<CTraceWizardSheet, TraceWizardFace>();
  host.RegisterFace<CFindDialog, FindFace>();
  host.RegisterFace<CColourRulesDialog, ColourRulesFace>();
  host.RegisterFace<CWorkBox, WorkBoxFace>();
  host.RegisterFace<CTraceDetailDialog, TraceDetailFace>();
  host.RegisterFace<CFilterDialog, FilterFace>();
  host.RegisterFace<LocateWait, LocateWaitFace>();
  host.RegisterFace<FindTextDialog, FindTextFace>();
  host.RegisterFace<CStatisticsDlg, StatisticsFace>();
  host.RegisterFace<CGoToDlg, GoToFace>();
  host.RegisterFace<CNoteDialog, NoteFace>();
  host.RegisterFace<CProfilesDialog, ProfilesFace>();
}

QtShellFaces::~QtShellFaces() {
  delete m_help;
}

std::unique_ptr<MainFrameFace> QtShellFaces::CreateMainFrame(CMainFrame& frame, int widthPx,
                                                             int heightPx) {
  auto face = std::make_unique<QtMainFrame>(frame, widthPx, heightPx, [this] {
    delete m_help;
    if (m_closed) m_closed();
  });
  m_mainWidget = &face->Window();
  m_host.SetMainWidget(m_mainWidget);
  return face;
}

// Three quarters of the screen, within comfortable limits.
void QtShellFaces::ProposedMainSize(int& widthPx, int& heightPx) {
  const QSize room = PrimaryRoom();
  widthPx = std::clamp(room.width() * 3 / 4, 640, 1400);
  heightPx = std::clamp(room.height() * 3 / 4, 480, 1000);
}

void QtShellFaces::LargestMainSize(int& widthPx, int& heightPx) {
  const QSize room = PrimaryRoom();
  widthPx = room.width();
  heightPx = room.height();
}

std::unique_ptr<RowList> QtShellFaces::CreateRowList(RowListOwner& owner) {
  return MakeTraceRows(owner);
}

std::unique_ptr<RowList> QtShellFaces::CreateSideRows(RowListOwner& owner,
                                                      const std::string& name) {
  return MakeRows(owner, name);
}

std::unique_ptr<TreeControl> QtShellFaces::CreateTree(TreeControlOwner& owner) {
  return std::make_unique<QtTreeControl>(owner, "Procedure tree");
}

std::unique_ptr<RichEdit> QtShellFaces::CreateRichEdit(RichEditOwner& owner) {
  return std::make_unique<QtRichEdit>(owner);
}

std::unique_ptr<ConfigPane> QtShellFaces::CreateConfigPane(ListBoxOwner& owner) {
  return std::make_unique<QtConfigPane>(owner);
}

std::unique_ptr<FilterLineFace> QtShellFaces::CreateFilterLine(FilterLine& line) {
  return std::make_unique<QtFilterLine>(line);
}

std::unique_ptr<OverviewFace> QtShellFaces::CreateOverview(OverviewStrip& strip) {
  return std::make_unique<QtOverview>(strip);
}

std::unique_ptr<BesideArea> QtShellFaces::CreateBesideArea(BesideAreaOwner& owner) {
  return std::make_unique<QtBesideArea>(owner);
}

std::unique_ptr<DetailsFace> QtShellFaces::CreateDetails(DetailsPane& pane) {
  return std::make_unique<QtDetails>(pane);
}

void QtShellFaces::ShowAbout(const std::string& versionLine) {
  AboutBox box(QString::fromStdString(versionLine), m_mainWidget);
  box.exec();
}

void QtShellFaces::ShowPrintSetup() {
  QPageSetupDialog setup(m_mainWidget);
  setup.exec();
}

// While a modal dialog is open the help is a window of the dialog, because the dialog blocks all
// others.
void QtShellFaces::ShowHelp(const std::string& topic) {
  QWidget* dialog = QApplication::activeModalWidget();
  if (m_help && m_help->parentWidget() != dialog) {
    delete m_help;
    m_help.clear();
  }
  if (!m_help) m_help = new HelpWindow(dialog);
  m_help->ShowTopic(QString::fromStdString(topic));
  m_help->show();
  m_help->raise();
  m_help->activateWindow();
}
