// A search in pieces: its answers, its box, its Cancel.
#include "tree/find/find_search.h"

#include <gtest/gtest.h>

#include "support/endless_texts.h"
#include "support/recording_host.h"
#include "support/short_pieces.h"
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
  RecordingHost m_host;
  CDocument m_document{m_host};
};

TEST_F(FindSearchTest, StopsAtTheFirstTextThatMatches) {
  Texts texts({"hay", "a needle", "another needle"});
  EXPECT_EQ(RunSearch(m_host, nullptr, texts), FindResult::Hit);
  EXPECT_EQ(texts.next, 2u);
  EXPECT_EQ(m_host.Reported(), "") << "a short search shows no box";
}

TEST_F(FindSearchTest, EndsWithTheWalk) {
  Texts texts({"hay", "hay"});
  EXPECT_EQ(RunSearch(m_host, nullptr, texts), FindResult::NotFound);
  EXPECT_EQ(texts.next, 2u);
  Texts none({});
  EXPECT_EQ(RunSearch(m_host, nullptr, none), FindResult::NotFound);
}

TEST_F(FindSearchTest, ALongSearchGoesOnBelowABox) {
  EndlessTexts texts;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Searching...");
    EXPECT_TRUE(m_document.IsBusy());
    m_host.TickTimers();
    EXPECT_FALSE(box.Ended());
    texts.text = "the needle";
    m_host.Finish(box);
  });
  EXPECT_EQ(RunSearch(m_host, &m_document, texts), FindResult::Hit);
  EXPECT_FALSE(m_document.IsBusy());
  EXPECT_EQ(m_host.Reported(), "dialog -> 1\n");
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(FindSearchTest, ALongSearchThatFindsNothingEndsItsBox) {
  EndlessTexts texts;
  m_host.AnswerWorkBox([&](CDialog& box) {
    texts.left = 10;
    m_host.Finish(box);
  });
  EXPECT_EQ(RunSearch(m_host, nullptr, texts), FindResult::NotFound);
}

TEST_F(FindSearchTest, CancelInTheBoxIsNoHitAndNoMessage) {
  EndlessTexts texts;
  m_host.AnswerWorkBox([&](CDialog& box) {
    m_host.TickTimers();
    box.OnCancel();
  });
  EXPECT_EQ(RunSearch(m_host, &m_document, texts), FindResult::Cancelled);
  EXPECT_EQ(m_host.Reported(), "dialog -> 2\n");
  EXPECT_FALSE(m_document.IsBusy());
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(FindSearchTest, APatternThatKeepsOneTextBusyCanBeCancelledInTheMiddleOfIt) {
  const ShortPieces shortPieces(m_host);
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", 0, 0, 0, 0), 1);
  Texts texts({std::string(60000, 'x') + "zy"});
  m_host.AnswerWorkBox([&](CDialog& box) {
    for (int i = 0; i < 3; ++i) m_host.TickTimers();
    EXPECT_FALSE(box.Ended());
    box.OnCancel();
  });
  EXPECT_EQ(RunSearch(m_host, nullptr, texts), FindResult::Cancelled);
  EXPECT_EQ(texts.next, 1u);
}

TEST_F(FindSearchTest, ATextThatTakesLongIsTakenUpAgainAndAnswered) {
  const ShortPieces shortPieces(m_host);
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", 0, 0, 0, 0), 1);
  Texts texts({std::string(60, 'x') + "z", std::string(120, 'x') + "zy"});
  m_host.AnswerWorkBox([&](CDialog& box) { m_host.Finish(box); });
  EXPECT_EQ(RunSearch(m_host, nullptr, texts), FindResult::Hit);
  EXPECT_EQ(texts.next, 2u);
  EXPECT_EQ(m_host.Reported(), "dialog -> 1\n") << "it went on below the box";
}

TEST_F(FindSearchTest, TextNotFoundHasNoIcon) {
  ReportNotFound(m_host);
  EXPECT_EQ(m_host.Reported(), "box Tessera [none] \"Text not found.\" (OK) -> OK\n");
}

}  // namespace
