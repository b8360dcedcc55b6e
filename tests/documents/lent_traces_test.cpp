// Threads that read a document's traces while it is closed, cleared or replaced.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "documents/trace_file_doc.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

constexpr int kTraces = 3000;  // more than one block

class LentTracesTest : public testing::Test {
 protected:
  LentTracesTest() {
    TrcImage image;
    for (int i = 0; i < kTraces; ++i) image.Trace({.text = "t" + std::to_string(i)});
    m_path = image.WriteTo(m_dir.File("a.trc"));
    Open();
  }
  void Open() {
    ASSERT_TRUE(m_document->OnOpenDocument(m_path));
    ASSERT_TRUE(m_host.RunUntil([this] { return !m_document->m_traces.empty(); }));
  }
  static void ExpectAll(const LentTraces& lent) {
    ASSERT_EQ(lent.traces.size(), static_cast<std::size_t>(kTraces));
    for (int i = 0; i < kTraces; i += 100)
      EXPECT_EQ(lent.traces[static_cast<std::size_t>(i)]->GetText(), "t" + std::to_string(i));
    int next = 2990;
    lent.traces.ForEachIn(2990, kTraces, [&next](const TraceEvent_i* event) {
      EXPECT_EQ(event->GetText(), "t" + std::to_string(next++));
    });
    EXPECT_EQ(next, kTraces);
  }

  TempDir m_dir;
  RecordingHost m_host;
  std::string m_path;
  std::unique_ptr<CTraceFileDoc> m_document = std::make_unique<CTraceFileDoc>(m_host);
};

TEST_F(LentTracesTest, TheTracesOfAFileOutliveItsDocumentWhileTheyAreLent) {
  const std::shared_ptr<const LentTraces> lent = m_document->Lend();
  ASSERT_TRUE(lent);
  EXPECT_EQ(m_document->Lend(), lent) << "one for all readers";
  m_document.reset();
  ExpectAll(*lent);
}

TEST_F(LentTracesTest, ADocumentThatIsClearedOrOpensAnotherFileGivesThemUp) {
  const std::shared_ptr<const LentTraces> lent = m_document->Lend();
  const std::uint64_t generation = m_document->m_traces.Generation();
  m_document->DeleteContents();
  EXPECT_TRUE(m_document->m_traces.empty());
  EXPECT_NE(m_document->m_traces.Generation(), generation) << "views must not read the old ones";
  ExpectAll(*lent);
  Open();  // kept: the cancel event is still set, so that the second load stops early
  const std::shared_ptr<const LentTraces> second = m_document->Lend();
  ASSERT_TRUE(second);
  EXPECT_NE(second, lent);
  ExpectAll(*lent);
  ASSERT_EQ(second->traces.size(), m_document->m_traces.size());
  EXPECT_EQ(second->traces[0]->GetText(), "t0");
}

TEST_F(LentTracesTest, AThreadMayReadWhileTheDocumentGoes) {
  std::atomic<bool> begun = false;
  std::atomic<std::uint64_t> sum = 0;
  std::thread reader([lent = m_document->Lend(), &begun, &sum] {
    for (int turn = 0; turn < 50; ++turn) {
      lent->traces.ForEachIn(0, lent->traces.size(), [&sum](const TraceEvent_i* event) {
        sum += RawTrace(event->Record()).Text().size();
      });
      begun = true;
    }
  });
  while (!begun) std::this_thread::yield();
  m_document.reset();
  reader.join();
  EXPECT_EQ(sum % 50, 0U);
  EXPECT_GT(sum, 0U);
}

TEST_F(LentTracesTest, NothingIsLentThatMayChangeOrIsNotThereYet) {
  CTraceDoc document(m_host);
  document.m_loading = false;
  document.AddTrace(MakeEvent({}).release());
  EXPECT_EQ(document.Lend(), nullptr) << "a monitor trims its traces";
  CTraceFileDoc loading(m_host);
  EXPECT_EQ(loading.Lend(), nullptr);
}

}  // namespace
