// The progress box of a load.
#include "shell/load_status.h"

#include <gtest/gtest.h>

#include "support/recording_host.h"

namespace {

class LoadStatus : public ::testing::Test {
 protected:
  RecordingHost m_host;
  HANDLE m_event = CreateEvent();
};

TEST_F(LoadStatus, IsAModelessWindowThatComesAndGoesWithTheObject) {
  {
    const CLoadStatus status(m_host, m_event);
    EXPECT_EQ(m_host.Modeless(), std::vector<CDialog*>{const_cast<CLoadStatus*>(&status)});
  }
  EXPECT_EQ(m_host.Reported(), "modeless opened\nmodeless closed\n");
}

TEST_F(LoadStatus, SetUpStoresThePathAndTheRangeAndUpdatesTheControls) {
  CLoadStatus status(m_host, m_event);
  m_host.ClearTranscript();
  status.SetUp("/data/web.trc", 4096);
  EXPECT_EQ(status.m_path, "/data/web.trc");
  EXPECT_EQ(status.m_range, 4096U);
  EXPECT_EQ(m_host.Reported(), "modeless updated\n");
}

TEST_F(LoadStatus, CaptionAndPositionUpdateTheControls) {
  CLoadStatus status(m_host, m_event);
  status.SetUp("web.trc", 4096);
  m_host.ClearTranscript();
  status.SetCaption("Loading...");
  status.SetPosition(1024);
  EXPECT_EQ(status.m_caption, "Loading...");
  EXPECT_EQ(status.m_position, 1024U);
  EXPECT_EQ(m_host.Reported(), "modeless updated\nmodeless updated\n");
}

TEST_F(LoadStatus, APositionBeyondTheRangeStandsAtItsEnd) {
  CLoadStatus status(m_host, m_event);
  status.SetUp("web.trc", 100);
  status.SetPosition(4000000000U);
  EXPECT_EQ(status.m_position, 100U);
  status.SetUp("shorter.trc", 50);
  EXPECT_EQ(status.m_position, 50U);
}

TEST_F(LoadStatus, PressingEnterDoesNothing) {
  CLoadStatus status(m_host, m_event);
  status.OnOK();
  EXPECT_FALSE(status.Ended());
  EXPECT_FALSE(m_event->IsSet());
  EXPECT_EQ(m_host.Modeless().size(), 1U);
}

TEST_F(LoadStatus, CancelOnlySignalsTheEventAndTheBoxStays) {
  CLoadStatus status(m_host, m_event);
  status.OnCancel();
  EXPECT_TRUE(m_event->IsSet());
  EXPECT_FALSE(status.Ended());
  EXPECT_EQ(m_host.Modeless().size(), 1U);
}

// After a failed load the box stays on the screen while its document goes.
TEST_F(LoadStatus, CancelSignalsSomethingRealAfterTheDocumentsHandleIsGone) {
  CLoadStatus status(m_host, m_event);
  const std::weak_ptr<WaitObject> watch = m_event;
  m_event.reset();
  status.OnCancel();
  ASSERT_FALSE(watch.expired());
  EXPECT_TRUE(watch.lock()->IsSet());
}

TEST_F(LoadStatus, ABoxWithoutAnEventCanBeCancelledAllTheSame) {
  CLoadStatus status(m_host, nullptr);
  status.OnCancel();
  EXPECT_FALSE(status.Ended());
}

}  // namespace
