// A search in pieces: its answers, its box, its Cancel.
#include "tree/find/find_search.h"

#include <gtest/gtest.h>

#include <chrono>

#include "support/endless_texts.h"
#include "support/recording_host.h"
#include "tree/find/search_box.h"
#include "tree/regex/regex.h"

namespace {

class Texts final : public FindWalk {
 public:
  explicit Texts(std::vector<std::string> texts) : m_texts(std::move(texts)) {}
  std::optional<std::string_view> NextText() override {
    if (next == m_texts.size()) return std::nullopt;
    return m_texts[next++];
  }
  std::size_t next = 0;  // texts given so far

 private:
  std::vector<std::string> m_texts;
};

class FindSearchTest : public testing::Test {
 protected:
  FindSearchTest() { EXPECT_EQ(RegexPrepare("needle", 0, 1, 0, 0), 1); }
  // Ticks the box's timer until the search has ended.
  void Tick(CDialog& box) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!box.Ended() && std::chrono::steady_clock::now() < deadline) m_host.TickTimers();
  }
  RecordingHost m_host;
};

TEST_F(FindSearchTest, StopsAtTheFirstTextThatMatches) {
  Texts texts({"hay", "a needle", "another needle"});
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::Hit);
  EXPECT_EQ(texts.next, 2u);
  EXPECT_EQ(m_host.Told(), "") << "a short search shows no box";
}

TEST_F(FindSearchTest, EndsWithTheWalk) {
  Texts texts({"hay", "hay"});
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::NotFound);
  EXPECT_EQ(texts.next, 2u);
  Texts none({});
  EXPECT_EQ(RunSearch(m_host, none), FindResult::NotFound);
}

TEST_F(FindSearchTest, ALongSearchGoesOnBelowABox) {
  EndlessTexts texts;
  m_host.AnswerDialog([&](CDialog& box) {
    EXPECT_NE(dynamic_cast<CSearchBox*>(&box), nullptr);
    EXPECT_TRUE(SearchIsRunning());
    m_host.TickTimers();
    EXPECT_FALSE(box.Ended());
    texts.text = "the needle";
    Tick(box);
  });
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::Hit);
  EXPECT_FALSE(SearchIsRunning());
  EXPECT_EQ(m_host.Told(), "dialog -> 1\n");
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(FindSearchTest, ALongSearchThatFindsNothingEndsItsBox) {
  EndlessTexts texts;
  m_host.AnswerDialog([&](CDialog& box) {
    texts.left = 10;
    Tick(box);
  });
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::NotFound);
}

TEST_F(FindSearchTest, CancelInTheBoxIsNoHitAndNoMessage) {
  EndlessTexts texts;
  m_host.AnswerDialog([&](CDialog& box) {
    m_host.TickTimers();
    box.OnCancel();
  });
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::Cancelled);
  EXPECT_EQ(m_host.Told(), "dialog -> 2\n");
  EXPECT_FALSE(SearchIsRunning());
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(FindSearchTest, EnterDoesNotEndTheBox) {
  CSearchBox box(m_host, [] { return false; });
  box.OnOK();
  EXPECT_FALSE(box.Ended());
}

TEST_F(FindSearchTest, APatternThatKeepsOneTextBusyCanBeCancelledInTheMiddleOfIt) {
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", 0, 0, 0, 0), 1);
  Texts texts({std::string(60000, 'x') + "zy"});
  m_host.AnswerDialog([&](CDialog& box) {
    for (int i = 0; i < 3; ++i) m_host.TickTimers();
    EXPECT_FALSE(box.Ended());
    box.OnCancel();
  });
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::Cancelled);
  EXPECT_EQ(texts.next, 1u);
}

TEST_F(FindSearchTest, ATextThatTakesLongIsTakenUpAgainAndAnswered) {
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", 0, 0, 0, 0), 1);
  Texts texts({std::string(60, 'x') + "z", std::string(60, 'x') + "zy"});
  m_host.AnswerDialog([&](CDialog& box) { Tick(box); });
  EXPECT_EQ(RunSearch(m_host, texts), FindResult::Hit);
  EXPECT_EQ(texts.next, 2u);
}

TEST_F(FindSearchTest, TextNotFoundHasNoIcon) {
  TellNotFound(m_host);
  EXPECT_EQ(m_host.Told(), "box Tessera [none] \"Text not found.\" (OK) -> OK\n");
}

}  // namespace
