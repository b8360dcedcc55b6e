// The fake window of traces keeps the contract of the real one.
#include "support/fake_viewed_frame.h"

#include "documents/trace_file_doc.h"
#include "settings/registry.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "support/viewed_frame_contract.h"

namespace {

class FakeHarness {
 public:
  FakeHarness() {
    SetSettingsFile(m_dir.File("settings.ini"));
    TrcImage image;
    for (int i = 0; i < kContractTraces; ++i) image.Trace("trace " + std::to_string(i));
    EXPECT_TRUE(m_document.OnOpenDocument(image.WriteTo(m_dir.File("web.trc"))));
    EXPECT_TRUE(m_host.RunUntil([this] { return !m_document.m_loading; }));
    m_host.RunPosted();
    m_frame = std::make_unique<FakeViewedFrame>(m_document);
  }
  ~FakeHarness() {
    m_frame.reset();
    SetSettingsFile("");
  }
  FakeViewedFrame& Frame() { return *m_frame; }
  FakeViewedFrame& Bare() { return m_bare; }
  void Run() {
    EXPECT_TRUE(m_host.RunUntil([this] { return !m_frame->ShownPane()->FilterProgress(); }));
    m_host.RunPosted();
  }
  void Cancel(const std::function<void()>& toggle) {
    m_frame->m_cancels = true;
    toggle();
  }
  std::string Notice() { return m_frame->m_notice; }
  int RowsHeight() { return 10; }
  int LineHeight() { return 1; }

 private:
  TempDir m_dir;
  RecordingHost m_host;
  CTraceFileDoc m_document{m_host};
  FakeViewedFrame m_bare;
  std::unique_ptr<FakeViewedFrame> m_frame;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ViewedFrameContract, FakeHarness);

}  // namespace
