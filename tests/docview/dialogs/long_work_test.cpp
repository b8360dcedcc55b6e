// Long work: its pieces, its box, its Cancel.
#include "docview/dialogs/long_work.h"

#include <gtest/gtest.h>

#include <thread>

#include "docview/document.h"
#include "support/recording_host.h"
#include "support/short_pieces.h"

namespace {

class Counting final : public LongWork {
 public:
  explicit Counting(int parts) : m_parts(parts) {}
  bool DoPart() override {
    std::this_thread::sleep_for(pause);
    return ++done == m_parts;
  }
  std::optional<int> Progress() const override { return done * 1000 / m_parts; }
  int done = 0;
  std::chrono::milliseconds pause{0};

 private:
  const int m_parts;
};

class LongWorkTest : public testing::Test {
 protected:
  bool Run(LongWork& work) {
    return RunLongWork(m_host, &m_document, {"Tessera", "Counting..."}, work);
  }
  RecordingHost m_host;
  CDocument m_document{m_host};
};

TEST_F(LongWorkTest, WhatIsDoneWithinAMomentShowsNoBox) {
  Counting work(1000);
  m_host.WantNoWorkBox();
  EXPECT_TRUE(Run(work));
  EXPECT_EQ(work.done, 1000);
}

TEST_F(LongWorkTest, TheMomentIsAFifthOfASecond) {
  EXPECT_EQ(m_host.Pieces().first.count(), 200);
  Counting work(1000);
  work.pause = std::chrono::milliseconds(1);
  int before = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    before = work.done;
    work.pause = {};
    m_host.Finish(box);
  });
  EXPECT_TRUE(Run(work));
  EXPECT_GT(before, 0);
  EXPECT_LE(before, 201);
}

TEST_F(LongWorkTest, LongWorkGoesOnBelowABoxThatTellsHowFarItIs) {
  const ShortPieces pieces(m_host);
  Counting work(4);
  m_host.AnswerWorkBox([&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Title(), "Tessera");
    EXPECT_STREQ(box.Message(), "Counting...");
    EXPECT_EQ(box.Progress(), 250);
    EXPECT_TRUE(m_document.IsBusy());
    m_host.TickTimers();
    EXPECT_EQ(box.Progress(), 500);
    EXPECT_FALSE(box.Ended());
    m_host.TickTimers();
    m_host.TickTimers();
    EXPECT_TRUE(box.Ended());
  });
  EXPECT_TRUE(Run(work));
  EXPECT_EQ(work.done, 4);
  EXPECT_FALSE(m_document.IsBusy());
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(LongWorkTest, CancelLeavesItWhereItStands) {
  const ShortPieces pieces(m_host);
  Counting work(4);
  m_host.AnswerWorkBox([&](CDialog& box) {
    m_host.TickTimers();
    box.OnCancel();
  });
  EXPECT_FALSE(Run(work));
  EXPECT_EQ(work.done, 2);
  EXPECT_FALSE(m_document.IsBusy());
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(LongWorkTest, ATickThatComesAfterTheCancelDoesNothing) {
  const ShortPieces pieces(m_host);
  Counting work(4);
  m_host.AnswerWorkBox([&](CDialog& box) {
    box.OnCancel();
    m_host.TickTimers();
  });
  EXPECT_FALSE(Run(work));
  EXPECT_EQ(work.done, 1);
}

TEST_F(LongWorkTest, EnterDoesNotEndTheBox) {
  const ShortPieces pieces(m_host);
  Counting work(2);
  m_host.AnswerWorkBox([&](CDialog& box) {
    box.OnOK();
    EXPECT_FALSE(box.Ended());
    m_host.Finish(box);
  });
  EXPECT_TRUE(Run(work));
}

TEST_F(LongWorkTest, WorkWithinWorkKeepsTheDocumentBusyUntilBothAreOver) {
  const ShortPieces pieces(m_host);
  Counting outer(3), inner(2);
  m_host.AnswerWorkBox([&](CDialog& box) {
    m_host.AnswerWorkBox([](CDialog& inside) { inside.OnCancel(); });
    EXPECT_FALSE(Run(inner));
    EXPECT_TRUE(m_document.IsBusy());
    box.OnCancel();
  });
  EXPECT_FALSE(Run(outer));
  EXPECT_FALSE(m_document.IsBusy());
}

}  // namespace
