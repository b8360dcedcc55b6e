// The real windows of traces keep the contract of what a view is taken from and given to: shown,
// small and large, and in a font of twice the size.
#include <QAbstractScrollArea>

#include "docview/ui/qt_control.h"
#include "shell/child_frame.h"
#include "shell/main_frame.h"
#include "shell_fixture.h"
#include "support/short_pieces.h"
#include "support/viewed_frame_contract.h"

namespace {

template <int WidthPx, int HeightPx, int FontPercent>
class QtHarness : public ShellTest {
 public:
  QtHarness() {
    QFont font = m_font;
    font.setPointSizeF(m_font.pointSizeF() * FontPercent / 100);
    QApplication::setFont(font);
    Start();
    Window().resize(WidthPx, HeightPx);
    Open(TraceFile("web.trc", kContractTraces));
    m_child = dynamic_cast<CTraceChildFrame*>(ShellTest::Frame().MDIGetActive());
    m_bare = std::make_unique<CTraceChildFrame>(ShellTest::Frame());
    Front()->showMaximized();
    Run();
  }
  ~QtHarness() override {
    m_bare.reset();
    QApplication::setFont(m_font);
  }
  ViewedFrame& Frame() { return m_child->Viewed(); }
  ViewedFrame& Bare() { return m_bare->Viewed(); }
  void Run() {
    EXPECT_TRUE(Until([this] { return !m_child->ShownPane()->FilterProgress(); }));
    Settle();
  }
  void Cancel(const std::function<void()>& toggle) {
    const ShortPieces pieces(m_host);
    OnModal([](QWidget* box) { static_cast<QDialog*>(box)->reject(); });
    toggle();
  }
  std::string Notice() {
    Settle();
    return Face().Panes().PaneText(kPaneMessage).toStdString();
  }
  int RowsHeight() {
    return Rows().isVisible() ? Rows().viewport()->visibleRegion().boundingRect().height() : 0;
  }
  int LineHeight() { return Rows().fontMetrics().height(); }
  void TestBody() override {}

 private:
  QAbstractScrollArea& Rows() {
    return *qobject_cast<QAbstractScrollArea*>(WidgetOf(m_child->ShownPane()->Control()));
  }

  const QFont m_font = QApplication::font();
  CTraceChildFrame* m_child = nullptr;
  std::unique_ptr<CTraceChildFrame> m_bare;
};

using Windows =
    testing::Types<QtHarness<420, 320, 100>, QtHarness<1600, 1000, 100>, QtHarness<1024, 768, 200>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ViewedFrameContract, Windows);

}  // namespace
