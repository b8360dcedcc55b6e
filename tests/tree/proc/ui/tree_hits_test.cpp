// A search in the tree view on the screen: its hits are tinted in the labels, and on view.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPaintEvent>
#include <QScrollBar>
#include <QTest>

#include "controls/tree/ui/tree_widget.h"
#include "docview/ui/hit_color.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "tree/find/find_settings.h"
#include "tree/proc/proc_view.h"
#include "tree/regex/regex.h"

namespace {

class HitsInTheTree : public testing::Test {
 protected:
  HitsInTheTree() {
    FindSettings = {};
    m_document.m_loading = false;
    m_view = std::make_unique<CProcView>(m_document, [this](TreeControlOwner& owner) {
      auto tree = std::make_unique<QtTreeControl>(owner, "Procedure tree");
      m_tree = tree.get();
      return tree;
    });
    m_tree->resize(500, 400);
    m_tree->show();
  }
  ~HitsInTheTree() override { FindSettings = {}; }

  // A tree of these leaves, all open, with its first item selected.
  void Open(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      m_document.AddTrace(MakeEvent({.text = text, .count = ++m_number, .machine = 1}).release());
      m_leaves.push_back(m_document.m_traces.back());
    }
    m_view->OnInitialUpdate();
    CTraceHint hint(m_leaves.front());
    m_view->OnUpdate(nullptr, kHintFollow, &hint);
    m_tree->SelectItem(m_tree->Walk(0, TreeStep::FirstChild));
  }
  void Find(const char* text) {
    ASSERT_EQ(RegexPrepare(text, 0, 1, 0, 0), 1);
    FindSettings.searchText = text;
    ASSERT_EQ(m_view->FindInTree(), FindResult::Hit);
  }
  // The row of a leaf, counted from the first.
  std::int64_t RowOf(std::size_t leaf) const {
    return m_tree->Items().Rows() - static_cast<std::int64_t>(m_leaves.size() - leaf);
  }
  QRect LabelOf(std::size_t leaf) const {
    return m_tree->Painter().LabelRect(m_tree->Items().At(RowOf(leaf)), RowOf(leaf));
  }
  // After these pieces, each of which is drawn for itself.
  int XOf(std::size_t leaf, std::initializer_list<std::string> pieces) const {
    int x = LabelOf(leaf).left() + 4;  // its margin
    for (const std::string& piece : pieces)
      x += m_tree->fontMetrics().horizontalAdvance(QString::fromStdString(piece));
    return x;
  }
  std::string Run(std::size_t leaf, std::initializer_list<std::string> before,
                  std::initializer_list<std::string> with) const {
    return std::to_string(XOf(leaf, before)) + "-" + std::to_string(XOf(leaf, with));
  }
  // "40-52 60-72": where the leaf's row is tinted, along a line above its letters.
  std::string Tinted(std::size_t leaf) {
    const QImage picture = m_tree->viewport()->grab().toImage();
    const QColor tint = HitColor(m_tree->palette());
    const int y = LabelOf(leaf).top() + 3;
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

  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  std::unique_ptr<CProcView> m_view;
  QtTreeControl* m_tree = nullptr;
  std::vector<TraceEvent_i*> m_leaves;
  std::uint32_t m_number = 0;
};

TEST_F(HitsInTheTree, AllOfAllLabelsAreTintedInLightAndInDark) {
  Open({"up and up", "down", "uup"});
  for (const bool dark : {false, true}) {
    if (dark) {
      QPalette palette = m_tree->palette();
      palette.setColor(QPalette::Base, QColor(30, 31, 34));
      palette.setColor(QPalette::Text, QColor(230, 230, 230));
      m_tree->setPalette(palette);
    }
    Find("up");
    EXPECT_EQ(Tinted(0), Run(0, {}, {"up"}) + " " + Run(0, {"up", " and "}, {"up", " and ", "up"}));
    EXPECT_EQ(Tinted(1), "");
    EXPECT_EQ(Tinted(2), Run(2, {"u"}, {"u", "up"}));
  }
}

// What of a widget is painted again.
class PaintedArea final : public QObject {
 public:
  QRegion area;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) area += static_cast<QPaintEvent*>(event)->region();
    return false;
  }
};

TEST_F(HitsInTheTree, WhenTheSelectionMovesTheyAreGoneFromTheWholePicture) {
  Open({"up and up", "down", "uup"});
  PaintedArea painted;
  m_tree->viewport()->installEventFilter(&painted);
  const auto isPainted = [&] { return painted.area.contains(LabelOf(2)); };
  Find("up");
  ASSERT_TRUE(QTest::qWaitFor(isPainted));
  QApplication::processEvents();
  ASSERT_NE(Tinted(2), "");
  QApplication::processEvents();
  painted.area = {};
  m_tree->SelectItem(m_tree->Walk(0, TreeStep::FirstChild));
  EXPECT_TRUE(QTest::qWaitFor(isPainted));
  EXPECT_EQ(Tinted(0) + Tinted(2), "");
}

TEST_F(HitsInTheTree, OneFarToTheRightIsScrolledAcrossTo) {
  const std::string before(150, 'm');
  Open({"first", before + "zone" + before, "zone"});
  Find("zone");
  QApplication::processEvents();
  EXPECT_EQ(m_tree->horizontalScrollBar()->value(), m_tree->LeftPx());
  const int roomPx = m_tree->viewport()->width();
  EXPECT_GE(XOf(1, {before}), 0);
  EXPECT_LE(XOf(1, {before, "zone"}), roomPx);
  EXPECT_EQ(Tinted(1), Run(1, {before}, {before, "zone"}));
  Find("zone");
  EXPECT_GE(XOf(2, {}), 0) << "and back";
}

}  // namespace
