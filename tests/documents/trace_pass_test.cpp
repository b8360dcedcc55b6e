// A walk over all traces of a document in parts.
#include "documents/trace_pass.h"

#include "documents_fixture.h"
#include "support/short_pieces.h"

namespace {

class Numbers final : public TracePass {
 public:
  explicit Numbers(const CTraceDoc& document) : TracePass(document) {}
  std::vector<std::uint32_t> taken;
  int finished = 0, finishesWanted = 1;

 private:
  void Take(std::size_t from, std::size_t end) override {
    Traces().ForEachIn(from, end, [this](const TraceEvent_i* event) {
      taken.push_back(event->GetSequenceNumber());
    });
  }
  bool Finish() override { return ++finished == finishesWanted; }
};

class TracePassTest : public DocumentsTest {
 protected:
  void Add(int count) {
    for (int i = 0; i < count; ++i)
      m_document.AddTrace(TraceEvent_i::Create(m_next++, 1, 2, 3, 4, PackDate(2026, 11, 21),
                                               PackTime(9, 41, 7, 123), 0, 5, 6, kAttributeInfo, 7,
                                               8, "up", ""));
  }
  PassResult Run(TracePass& pass) { return RunTracePass(m_document, "Reading...", pass); }
  // The numbers from `first` on.
  static std::vector<std::uint32_t> From(std::uint32_t first, std::size_t count) {
    std::vector<std::uint32_t> numbers(count);
    for (std::size_t i = 0; i < count; ++i) numbers[i] = first + static_cast<std::uint32_t>(i);
    return numbers;
  }

  const ShortPieces m_pieces{m_host};
  CTraceDoc m_document{m_host};
  std::uint32_t m_next = 1;
};

TEST_F(TracePassTest, TakesEachTraceOnceAndInOrderThenFinishes) {
  Add(20000);
  m_document.m_traces.PopFront();
  Numbers pass(m_document);
  pass.finishesWanted = 3;
  EXPECT_EQ(Run(pass), PassResult::Whole);
  EXPECT_EQ(pass.taken, From(2, 19999));
  EXPECT_EQ(pass.finished, 3);
}

TEST_F(TracePassTest, ADocumentWithoutTracesIsFinishedToo) {
  Numbers pass(m_document);
  EXPECT_EQ(Run(pass), PassResult::Whole);
  EXPECT_EQ(pass.finished, 1);
}

TEST_F(TracePassTest, TellsHowFarItIs) {
  Add(20000);
  Numbers pass(m_document);
  EXPECT_EQ(pass.Progress(), 0);
  int last = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    while (!box.Ended()) {
      EXPECT_GE(pass.Progress(), last);
      last = *pass.Progress();
      m_host.TickTimers();
    }
  });
  EXPECT_EQ(Run(pass), PassResult::Whole);
  EXPECT_GT(last, 500);
  EXPECT_LE(last, 1000);
}

TEST_F(TracePassTest, CancelledItStopsInTheMiddle) {
  Add(20000);
  Numbers pass(m_document);
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  EXPECT_EQ(Run(pass), PassResult::Cancelled);
  EXPECT_LT(pass.taken.size(), 20000U);
  EXPECT_EQ(pass.finished, 0);
}

// Whatever changes the traces in between: the pass reads none of them any more.
TEST_F(TracePassTest, ADocumentThatChangesMakesItVoid) {
  const std::vector<std::function<void()>> changes = {[this] { m_document.DeleteContents(); },
                                                      [this] { m_document.m_traces.PopFront(); },
                                                      [this] { Add(1); },
                                                      [this] {  // as many as before, but others
                                                        m_document.DeleteContents();
                                                        Add(20000);
                                                      }};
  for (const auto& change : changes) {
    m_document.DeleteContents();
    Add(20000);
    Numbers pass(m_document);
    m_host.AnswerWorkBox([&](CDialog& box) {
      change();
      m_host.Finish(box);
    });
    EXPECT_EQ(Run(pass), PassResult::Void);
    EXPECT_LT(pass.taken.size(), 20000U);
    EXPECT_EQ(pass.finished, 0);
  }
}

}  // namespace
