// Views and profiles as JSON: what is written is read again, and what is hostile is refused.
#include "views/view_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace {

using testing::HasSubstr;

ViewState Whole() {
  ViewState state;
  state.columns = {{"Sev", 40, true}, {"Trace", 900, true}, {"PID", 52, false}};
  state.filter = "severity >= warn and text contains \"a\\\"b\xC3\xA9\"";
  state.colours = ViewColours{true, {{"Errors", "severity == error", {1, 2, 3}, {4, 5, 6}, false}}};
  state.marks = "component != Net";
  state.tree = true;
  state.panes = {"Details", "Marks"};
  state.row = ViewRow{7'000'000'000, 0xfedcba9876543210};
  return state;
}

StoredView Stored() {
  StoredView view{.source = "/tmp/web.trc", .file = {}, .state = Whole(), .onTrial = true};
  view.file = {70'000, {{64, 1}, {1024, 0xffffffffffffffff}}};
  return view;
}

std::string Text(const StoredView& view) {
  std::string text, why;
  EXPECT_TRUE(ViewText(view, text, &why)) << why;
  return text;
}

std::string WhyNot(const std::string& text) {
  std::string why;
  EXPECT_FALSE(ReadView(text, &why)) << text;
  return why;
}

std::string With(std::string text, const std::string& from, const std::string& to) {
  const std::size_t place = text.find(from);
  EXPECT_NE(place, text.npos) << from << " in " << text;
  return place == text.npos ? text : text.replace(place, from.size(), to);
}

TEST(ViewText, WhatIsWrittenIsReadAgain) {
  std::string why;
  for (const StoredView& view : {Stored(), StoredView{.source = "monitor:web"}}) {
    const auto read = ReadView(Text(view), &why);
    ASSERT_TRUE(read) << why;
    EXPECT_EQ(*read, view);
  }
}

TEST(ViewText, APartThatNothingIsSaidAboutIsNotTheSameAsAnEmptyOne) {
  StoredView view{.source = "a"};
  view.state.filter = "";
  view.state.tree = false;
  view.state.panes.emplace();
  view.state.colours.emplace();
  const auto read = ReadView(Text(view), nullptr);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->state, view.state);
  EXPECT_FALSE(read->state.row);
}

TEST(ViewText, AProfileHasNoRow) {
  std::string text, why;
  ASSERT_TRUE(ProfileText({"Slow orders", Whole()}, text, &why)) << why;
  const auto read = ReadProfile(text, &why);
  ASSERT_TRUE(read) << why;
  EXPECT_EQ(read->name, "Slow orders");
  ViewState state = Whole();
  state.row.reset();
  EXPECT_EQ(read->state, state);
}

TEST(ViewText, AViewIsNoProfileAndAProfileNoView) {
  std::string text, why;
  ASSERT_TRUE(ProfileText({"a", {}}, text, nullptr));
  EXPECT_THAT(WhyNot(text), HasSubstr("not of the form tessera-view"));
  EXPECT_FALSE(ReadProfile(Text(Stored()), &why));
  EXPECT_THAT(why, HasSubstr("not of the form tessera-profile"));
}

TEST(ViewText, AMemberOfALaterVersionIsLeftOut) {
  const auto read = ReadView(With(Text(Stored()), "{", "{\"later\": [1, {\"a\": null}],"), nullptr);
  ASSERT_TRUE(read);
  EXPECT_EQ(*read, Stored());
}

TEST(ViewText, EachWrongPartRefusesTheTextWithItsName) {
  const std::string text = Text(Stored());
  EXPECT_THAT(WhyNot(With(text, "\"version\": 1", "\"version\": 2")), HasSubstr("version"));
  EXPECT_THAT(WhyNot(With(text, "\"width\": 900", "\"width\": 70000")), HasSubstr("columns"));
  EXPECT_THAT(WhyNot(With(text, "\"width\": 900", "\"width\": -1")), HasSubstr("columns"));
  EXPECT_THAT(WhyNot(With(text, "\"name\": \"PID\"", "\"name\": 5")), HasSubstr("columns"));
  EXPECT_THAT(WhyNot(With(text, "\"tree\"", "\"forest\"")), HasSubstr("view"));
  EXPECT_THAT(WhyNot(With(text, "\"fedcba9876543210\"", "\"fedc\"")), HasSubstr("row"));
  EXPECT_THAT(WhyNot(With(text, "\"fedcba9876543210\"", "\"fedcba987654321g\"")), HasSubstr("row"));
  EXPECT_THAT(WhyNot(With(text, "7000000000", "-7")), HasSubstr("row"));
  EXPECT_THAT(WhyNot(With(text, "\"ink\": \"#010203\"", "\"ink\": \"red\"")), HasSubstr("colours"));
  EXPECT_THAT(WhyNot(With(text, "\"on-trial\": true", "\"on-trial\": 1")), HasSubstr("on-trial"));
  EXPECT_THAT(WhyNot(With(text, "\"bytes\": 70000", "\"bytes\": \"a\"")), HasSubstr("file"));
  EXPECT_THAT(WhyNot(With(text, "\"/tmp/web.trc\"", "[]")), HasSubstr("source"));
}

TEST(ViewText, NoBeginningOfATextIsReadAndNoneEndsTheProgram) {
  const std::string text = Text(Stored());
  for (std::size_t size = 0; size + 2 < text.size(); ++size)
    EXPECT_FALSE(ReadView(text.substr(0, size), nullptr)) << size;
}

TEST(ViewText, AnyChangedByteIsReadOrRefused) {
  const std::string text = Text(Stored());
  std::string why;
  for (std::size_t place = 0; place < text.size(); ++place) {
    for (const char byte : {'\0', '"', '9', '{', '\xff'}) {
      std::string changed = text;
      changed[place] = byte;
      why.clear();
      const bool read = ReadView(changed, &why).has_value();
      EXPECT_EQ(read, why.empty()) << place;
    }
  }
}

TEST(ViewText, ADeepOrLongTextIsRefusedBeforeItIsWalked) {
  EXPECT_THAT(WhyNot("{\"colours\": {\"rules\": " + std::string(500'000, '[') +
                     std::string(500'000, ']') + "}}"),
              HasSubstr("nested too deeply"));
  EXPECT_THAT(WhyNot(std::string(kViewBytesMax + 1, ' ')), HasSubstr("longer"));
  std::string columns;
  for (int i = 0; i < 101; ++i) columns += "{\"name\": \"a\", \"width\": 1, \"shown\": true},";
  EXPECT_THAT(WhyNot(With(Text(Stored()), "\"columns\": [", "\"columns\": [" + columns)),
              HasSubstr("columns"));
}

TEST(ViewText, AFilterTextThatIsTooLongToBeReadAgainIsNotWritten) {
  StoredView view{.source = "a"};
  view.state.filter = std::string(kViewFilterBytes + 1, 'x');
  std::string text, why;
  EXPECT_FALSE(ViewText(view, text, &why));
  EXPECT_THAT(why, HasSubstr("filter text"));
}

TEST(ViewText, BytesThatAreNoUtf8AreReplacedWhenTheyAreWritten) {
  StoredView view{.source = "a"};
  view.state.filter = "text == \"\xff\"";
  const auto read = ReadView(Text(view), nullptr);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->state.filter, "text == \"\xEF\xBF\xBD\"");
}

TEST(ViewText, AProfileIsAFileOfItsOwn) {
  const TempDir dir;
  std::string why;
  const std::string path = dir.File("a.profile");
  ASSERT_TRUE(SaveProfile(path, {"a", Whole()}, &why)) << why;
  const auto read = LoadProfile(path, &why);
  ASSERT_TRUE(read) << why;
  EXPECT_EQ(read->state.filter, Whole().filter);
  EXPECT_FALSE(LoadProfile(dir.File("none"), &why));
  EXPECT_THAT(why, HasSubstr("none: No such file"));
  EXPECT_FALSE(LoadProfile(dir.Path(), &why));
  EXPECT_FALSE(LoadProfile(dir.File("b", "{}"), &why));
  EXPECT_THAT(why, testing::StartsWith(dir.File("b") + ": "));
}

}  // namespace
