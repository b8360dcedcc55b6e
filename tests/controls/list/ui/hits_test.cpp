// What a search has found, as it shows in the rows of a list.
#include <gtest/gtest.h>

#include <cmath>

#include "docview/ui/hit_color.h"
#include "row_list_harness.h"

namespace {

// A list of one wide column, "Trace", with a row that reads so.
class HitsInRows : public testing::Test {
 protected:
  HitsInRows() {
    for (const ColumnInfo& column : kColumns)
      m_shown.list.Header().SetColumnWidth(column.column, 0);
    m_shown.list.Header().SetColumnWidth(Column::Trace, 300);
    m_shown.list.resize(340, m_shown.list.height());
  }
  void Put(const char* text, std::vector<HitRange> hits) {
    m_shown.owner.texts[{1, Column::Trace}] = text;
    m_shown.owner.hits[{1, Column::Trace}] = std::move(hits);
    m_shown.list.Repaint();
  }
  // After these pieces, each of which is drawn for itself.
  int XOf(std::initializer_list<std::string> pieces) {
    int x = m_shown.list.CellRect(1, Column::Trace).left() + RowHeader::kCellMarginPx;
    for (const std::string& piece : pieces)
      x += m_shown.list.fontMetrics().horizontalAdvance(QString::fromStdString(piece));
    return x;
  }
  // "4-36 60-80": where the row is tinted, along a line above its letters.
  std::string Tinted() {
    const QImage picture = m_shown.Picture();
    const QColor tint = HitColor(m_shown.list.palette());
    const int y = m_shown.list.RowRect(1).top() + 3;
    std::string runs;
    for (int x = 0, begin = -1; x <= picture.width(); ++x) {
      const bool hit = x < picture.width() && picture.pixelColor(x, y) == tint;
      if (hit && begin == -1) begin = x;
      if (hit || begin == -1) continue;
      runs += (runs.empty() ? "" : " ") + std::to_string(begin) + "-" + std::to_string(x);
      begin = -1;
    }
    return runs;
  }
  std::string Run(std::initializer_list<std::string> before,
                  std::initializer_list<std::string> with) {
    return std::to_string(XOf(before)) + "-" + std::to_string(XOf(with));
  }

  ShownList m_shown{20};
};

TEST_F(HitsInRows, EachOfThemIsTintedInLightAndInDark) {
  Put("up and up, uup", {{0, 2}, {7, 9}, {12, 14}});
  for (const bool dark : {false, true}) {
    if (dark) {
      QPalette palette = m_shown.list.palette();
      palette.setColor(QPalette::Base, QColor(30, 31, 34));
      palette.setColor(QPalette::Text, QColor(230, 230, 230));
      m_shown.list.setPalette(palette);
    }
    EXPECT_EQ(Tinted(), Run({}, {"up"}) + " " + Run({"up", " and "}, {"up", " and ", "up"}) + " " +
                            Run({"up", " and ", "up", ", u"}, {"up", " and ", "up", ", u", "up"}));
  }
}

TEST_F(HitsInRows, TwoThatTouchAreTintedThroughoutAlsoOnASelectedRow) {
  Put("abab!", {{0, 2}, {2, 4}});
  m_shown.list.SetItemState(1, kRowSelected, kRowSelected);
  EXPECT_EQ(Tinted(), Run({}, {"ab", "ab"}));
}

TEST_F(HitsInRows, DotsThatHideAHitAreTintedAndNoOthers) {
  const std::string text(100, 'm');
  Put(text.c_str(), {});
  EXPECT_EQ(Tinted(), "");
  Put(text.c_str(), {{0, 1}});
  EXPECT_EQ(Tinted(), Run({}, {"m"}));
  Put(text.c_str(), {{0, 1}, {90, 91}, {95, 96}});
  const std::string tinted = Tinted();
  ASSERT_EQ(tinted.find(Run({}, {"m"}) + " "), 0U) << tinted;
  const QRect cell = m_shown.list.CellRect(1, Column::Trace);
  EXPECT_GT(std::stoi(tinted.substr(tinted.find(' '))), cell.right() - 60) << "they end the text";
}

TEST_F(HitsInRows, OneOutOfViewIsScrolledAcrossTo) {
  QScrollBar* const across = m_shown.list.horizontalScrollBar();
  m_shown.list.Header().SetColumnWidth(Column::Trace, 2000);
  Put((std::string(100, 'm') + "hit" + std::string(20, 'm')).c_str(), {{100, 103}, {110, 112}});
  m_shown.list.ShowHit(1, Column::Trace);
  ASSERT_GT(across->value(), 0);
  const std::string before(100, 'm');
  const auto onView = [&](const std::string& beginning) {
    const int x = XOf({beginning});
    return x >= 0 && x < m_shown.list.viewport()->width();
  };
  EXPECT_TRUE(onView(before));
  EXPECT_TRUE(onView(before + "hit"));
  const int value = across->value();
  m_shown.list.ShowHit(1, Column::Trace);
  EXPECT_EQ(across->value(), value) << "it is on view";
  Put("a hit in front", {{2, 5}});
  m_shown.list.ShowHit(1, Column::Trace);
  EXPECT_LT(across->value(), value);
  EXPECT_TRUE(onView("a "));
}

TEST_F(HitsInRows, WithoutAHitNothingScrolls) {
  QScrollBar* const across = m_shown.list.horizontalScrollBar();
  m_shown.list.Header().SetColumnWidth(Column::Trace, 2000);
  Put("nothing here", {});
  across->setValue(500);
  m_shown.list.ShowHit(1, Column::Trace);
  m_shown.list.ShowHit(1, Column::Source);
  m_shown.list.ShowHit(-1, Column::Trace);
  m_shown.list.ShowHit(20, Column::Trace);
  EXPECT_EQ(across->value(), 500);
}

TEST_F(HitsInRows, OfOneThatItsColumnCutsOffTheDotsAreScrolledTo) {
  m_shown.list.Header().SetColumnWidth(Column::Trace, 600);
  Put(std::string(200, 'm').c_str(), {{150, 160}});
  m_shown.list.ShowHit(1, Column::Trace);
  EXPECT_EQ(m_shown.list.horizontalScrollBar()->value(),
            m_shown.list.horizontalScrollBar()->maximum());
}

double Luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

double Contrast(const QColor& a, const QColor& b) {
  const double light = std::max(Luminance(a), Luminance(b));
  const double dark = std::min(Luminance(a), Luminance(b));
  return (light + 0.05) / (dark + 0.05);
}

TEST(HitColors, TextCanBeReadOnTheTintAndTheTintBeSeen) {
  for (const auto& [base, text] : {std::pair(QColor(255, 255, 255), QColor(0, 0, 0)),
                                   std::pair(QColor(30, 31, 34), QColor(230, 230, 230)),
                                   std::pair(QColor(0, 0, 0), QColor(255, 255, 255))}) {
    QPalette palette;
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Text, text);
    const QColor tint = HitColor(palette);
    EXPECT_GT(Contrast(tint, text), 4.5);
    EXPECT_GT(tint.red() - tint.blue(), 60);
    EXPECT_GT(Contrast(tint, base), 1.25);
    const RowLook look = LookOf(palette, {.selected = true, .keyboard = true});
    EXPECT_EQ(look.hit, tint);
    EXPECT_EQ(look.hitText, text);
  }
}

}  // namespace
