#include "tree/filter/ui/filter_face.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTreeView>
#include <functional>

#include "docview/ui/plain_tool_tip.h"
#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"
#include "tree/filter/filter_tree_text.h"
#include "tree/filter/ui/filter_boxes.h"
#include "tree/filter/ui/filter_model.h"

namespace {

class FilterFaceTest : public testing::Test {
 protected:
  FilterFaceTest() {
    m_host.RegisterFace<CFilterDialog, FilterFace>();
    m_filter.components = {{3, 1}, {4, 1}};
  }

  // Runs the dialog; `person` acts on its tree.
  int Run(const std::function<void(QDialog&, QTreeView&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
      person(*window, *window->findChild<QTreeView*>("1112"));
      if (window->isVisible()) window->reject();
    }));
    return m_dialog.DoModal();
  }
  QModelIndex At(QTreeView& tree, const std::vector<std::string>& labels) {
    return static_cast<FilterModel*>(tree.model())->IndexOf(&NodeAt(m_dialog, labels));
  }
  static QPoint OnBox(QTreeView& tree, const QModelIndex& index) {
    QStyleOptionViewItem option;
    option.initFrom(&tree);
    option.widget = &tree;
    option.rect = tree.visualRect(index);
    return static_cast<FilterBoxes*>(tree.itemDelegate())->BoxRect(option, index).center();
  }
  static QPoint OnLabel(QTreeView& tree, const QModelIndex& index) {
    return OnBox(tree, index) + QPoint(30, 0);
  }
  static void Click(QTreeView& tree, QPoint at) {
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, at);
  }
  std::string Box(const std::vector<std::string>& labels) {
    return BoxText(NodeAt(m_dialog, labels).State());
  }

  QtHost m_host;
  CTraceFilter m_filter;
  NameMap m_names = {{3, {"net"}}, {4, {"Db"}}};
  CFilterDialog m_dialog{m_host, m_filter, m_names};
};

}  // namespace

TEST_F(FilterFaceTest, HasItsTitleItsTextAndTwoButtonsAndNothingIsExpanded) {
  Run([](QDialog& window, QTreeView& tree) {
    EXPECT_EQ(window.windowTitle(), "Filter");
    EXPECT_EQ(window.findChild<QLabel*>()->text(), CFilterDialog::kText);
    QStringList buttons;
    for (const QPushButton* button : window.findChildren<QPushButton*>())
      buttons << button->objectName() + button->text();
    EXPECT_EQ(buttons, (QStringList{"1OK", "2Cancel"}));
    EXPECT_EQ(tree.model()->rowCount(), 1);
    EXPECT_FALSE(tree.isExpanded(tree.model()->index(0, 0)));
    EXPECT_TRUE(tree.hasFocus());
    EXPECT_EQ(tree.currentIndex(), tree.model()->index(0, 0));
  });
}

TEST_F(FilterFaceTest, AClickOnTheBoxTogglesAndSelectsAndNothingOpens) {
  Run([this](QDialog&, QTreeView& tree) {
    tree.expand(At(tree, {}));
    const QModelIndex components = At(tree, {"All Components"});
    Click(tree, OnBox(tree, components));
    EXPECT_EQ(Box({"All Components"}), "[ ] ");
    EXPECT_EQ(Box({"All Components", "Db"}), "[ ] ");
    EXPECT_EQ(Box({}), "[-] ");
    EXPECT_EQ(tree.currentIndex(), components);
    EXPECT_FALSE(tree.isExpanded(components));
    Click(tree, OnBox(tree, At(tree, {})));
    EXPECT_EQ(Box({}), "[x] ");
  });
}

TEST_F(FilterFaceTest, AClickOnTheLabelOnlySelects) {
  Run([this](QDialog&, QTreeView& tree) {
    tree.expand(At(tree, {}));
    Click(tree, OnLabel(tree, At(tree, {"All Attributes"})));
    EXPECT_EQ(tree.currentIndex(), At(tree, {"All Attributes"}));
    EXPECT_EQ(m_dialog.Selected(), &NodeAt(m_dialog, {"All Attributes"}));
    EXPECT_EQ(Box({"All Attributes"}), "[x] ");
  });
}

TEST_F(FilterFaceTest, AClickOnAnExpandButtonSelectsItsNodeAndOpensIt) {
  Run([this](QDialog&, QTreeView& tree) {
    tree.expand(At(tree, {}));
    const QModelIndex components = At(tree, {"All Components"});
    const QRect row = tree.visualRect(components);
    const QPoint button(row.left() - tree.indentation() / 2, row.center().y());
    Click(tree, button);
    EXPECT_TRUE(tree.isExpanded(components));
    EXPECT_EQ(tree.currentIndex(), components);
    EXPECT_TRUE(tree.selectionModel()->isSelected(components));
    EXPECT_EQ(m_dialog.Selected(), &NodeAt(m_dialog, {"All Components"}));
    EXPECT_EQ(Box({"All Components"}), "[x] ");
    tree.setCurrentIndex(At(tree, {}));
    Click(tree, button);
    EXPECT_FALSE(tree.isExpanded(components));
    EXPECT_EQ(tree.currentIndex(), components);
  });
}

TEST_F(FilterFaceTest, AClickRightOfALabelSelectsItsNode) {
  Run([this](QDialog&, QTreeView& tree) {
    tree.expand(At(tree, {}));
    const QModelIndex attributes = At(tree, {"All Attributes"});
    const QPoint right(tree.viewport()->width() - 3, tree.visualRect(attributes).center().y());
    ASSERT_FALSE(tree.indexAt(right).isValid());
    Click(tree, right);
    EXPECT_EQ(tree.currentIndex(), attributes);
    EXPECT_TRUE(tree.selectionModel()->isSelected(attributes));
    EXPECT_EQ(m_dialog.Selected(), &NodeAt(m_dialog, {"All Attributes"}));
    EXPECT_EQ(Box({"All Attributes"}), "[x] ");
  });
}

TEST_F(FilterFaceTest, AClickSelectsItsNodeAlsoWhereTheTreeIsScrolledToTheRight) {
  m_names[3].name = std::string(3000, 'n');
  Run([this](QDialog&, QTreeView& tree) {
    tree.expand(At(tree, {}));
    tree.expand(At(tree, {"All Components"}));
    QTest::qWait(0);
    tree.horizontalScrollBar()->setValue(tree.horizontalScrollBar()->maximum());
    ASSERT_GT(tree.horizontalScrollBar()->value(), 0);
    const QModelIndex attributes = At(tree, {"All Attributes"});
    Click(tree, QPoint(5, tree.visualRect(attributes).center().y()));
    EXPECT_EQ(m_dialog.Selected(), &NodeAt(m_dialog, {"All Attributes"}));
    EXPECT_EQ(tree.currentIndex(), attributes);
  });
}

TEST_F(FilterFaceTest, AFastSecondClickOnTheBoxCountsAndOpensNothing) {
  Run([this](QDialog&, QTreeView& tree) {
    tree.expand(At(tree, {}));
    const QModelIndex components = At(tree, {"All Components"});
    const QPoint at = OnBox(tree, components);
    QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, at);  // press, release, and both again
    EXPECT_EQ(Box({"All Components"}), "[x] ");
    Click(tree, at);
    EXPECT_EQ(Box({"All Components"}), "[ ] ");
    EXPECT_FALSE(tree.isExpanded(components));
  });
}

TEST_F(FilterFaceTest, OtherButtonsToggleNothing) {
  Run([this](QDialog&, QTreeView& tree) {
    QTest::mouseClick(tree.viewport(), Qt::RightButton, {}, OnBox(tree, At(tree, {})));
    EXPECT_EQ(Box({}), "[x] ");
  });
}

TEST_F(FilterFaceTest, AClickBesideTheNodesSelectsNone) {
  Run([this](QDialog&, QTreeView& tree) {
    Click(tree, QPoint(tree.viewport()->width() / 2, tree.viewport()->height() - 3));
    EXPECT_EQ(m_dialog.Selected(), nullptr);
    EXPECT_FALSE(tree.currentIndex().isValid());
    EXPECT_EQ(Box({}), "[x] ");
  });
}

TEST_F(FilterFaceTest, TheKeyboardReachesEverything) {
  EXPECT_EQ(Run([this](QDialog& window, QTreeView& tree) {
              QTest::keyClick(&tree, Qt::Key_Right);  // opens All Traces
              QTest::keyClick(&tree, Qt::Key_Down);   // All Severities
              QTest::keyClick(&tree, Qt::Key_Space);
              EXPECT_EQ(Box({"All Severities"}), "[ ] ");
              QTest::keyClick(&tree, Qt::Key_Right);
              QTest::keyClick(&tree, Qt::Key_Down);  // Info
              QTest::keyClick(&tree, Qt::Key_Space);
              EXPECT_EQ(Box({"All Severities"}), "[-] ");
              EXPECT_EQ(Box({"All Severities", "Info"}), "[x] ");
              QTest::keyClick(&window, Qt::Key_Return);
            }),
            CDialog::kIdOk);
  EXPECT_EQ(m_filter.severities, (std::vector<int>{1, 0, 0}));
  EXPECT_EQ(m_filter.allTraces, 0);
}

TEST_F(FilterFaceTest, EscLeavesTheFilterAsItWas) {
  EXPECT_EQ(Run([this](QDialog& window, QTreeView& tree) {
              Click(tree, OnBox(tree, At(tree, {})));
              QTest::keyClick(&window, Qt::Key_Escape);
            }),
            CDialog::kIdCancel);
  EXPECT_EQ(m_filter.allTraces, 1);
}

TEST_F(FilterFaceTest, AReaderOfTheScreenHearsTheLabelAndTheState) {
  Run([this](QDialog&, QTreeView& tree) {
    QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(&tree);
    ASSERT_TRUE(reader && reader->tableInterface());
    QAccessibleInterface* all = reader->tableInterface()->cellAt(0, 0);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->text(QAccessible::Name), "All Traces");
    EXPECT_TRUE(all->state().checkable);
    EXPECT_TRUE(all->state().checked);
    EXPECT_EQ(all->text(QAccessible::Description), "checked");
    tree.expand(At(tree, {}));
    Click(tree, OnBox(tree, At(tree, {"All Components"})));
    EXPECT_FALSE(all->state().checked);
    EXPECT_EQ(all->text(QAccessible::Description), "partly checked");
    EXPECT_EQ(At(tree, {"All Components"}).data(Qt::AccessibleDescriptionRole), "not checked");
    EXPECT_FALSE(tree.accessibleName().isEmpty());
  });
}

TEST_F(FilterFaceTest, TheThreeBoxesLookDifferentInBothPalettesAndTheSameWhenSelected) {
  QPalette dark;
  dark.setColor(QPalette::Base, QColor(30, 30, 30));
  dark.setColor(QPalette::Text, Qt::white);
  for (const QPalette& palette : {QPalette(Qt::lightGray), dark}) {
    std::vector<QImage> looks;
    for (const auto state : {Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked}) {
      const QIcon icon = FilterBox(state, palette);
      looks.push_back(icon.pixmap(16, 16).toImage());
      EXPECT_EQ(looks.back().size(), QSize(16, 16));
      EXPECT_EQ(icon.pixmap(16, 16, QIcon::Selected).toImage(), looks.back());
    }
    EXPECT_NE(looks[0], looks[1]);
    EXPECT_NE(looks[1], looks[2]);
    EXPECT_NE(looks[0], looks[2]);
  }
}

TEST_F(FilterFaceTest, MarkupInANameIsShownAsItIs) {
  m_names[3].name = "<b>net</b>";
  Run([this](QDialog&, QTreeView& tree) {
    const QModelIndex name = At(tree, {"All Components", "<b>net</b>"});
    EXPECT_EQ(name.data(Qt::DisplayRole), "<b>net</b>");
    EXPECT_EQ(name.data(Qt::ToolTipRole), PlainToolTip("<b>net</b>"));
  });
}

TEST_F(FilterFaceTest, ALongNameIsReachedByScrolling) {
  m_names[3].name = std::string(3000, 'n');
  Run([this](QDialog& window, QTreeView& tree) {
    tree.expand(At(tree, {}));
    tree.expand(At(tree, {"All Components"}));
    EXPECT_LT(window.width(), 1000);
    EXPECT_GT(tree.columnWidth(0), tree.viewport()->width());
  });
}

TEST_F(FilterFaceTest, WhereALineTakesItTheTreeIsWrittenAsTextByAButton) {
  m_dialog.m_takeAsText = [](const CTraceFilter& chosen, std::string*) {
    return chosen.severities[1] == 0;
  };
  EXPECT_EQ(Run([](QDialog& window, QTreeView& tree) {
              auto* const button = window.findChild<QPushButton*>("1222");
              ASSERT_TRUE(button);
              EXPECT_EQ(button->text(), "As &Text");
              EXPECT_FALSE(button->isDefault());
              auto* const ok = window.findChild<QPushButton*>("1");
              auto* const row = button->parentWidget();
              EXPECT_EQ(button->x(), 0) << "at the left of the row";
              EXPECT_GT(ok->x(), row->width() / 2) << "those that answer at the right";
              EXPECT_FALSE(button->accessibleDescription().isEmpty());
              tree.expandAll();
              QTest::keyClick(&tree, Qt::Key_Home);
              for (int i = 0; i < 3; ++i) QTest::keyClick(&tree, Qt::Key_Down);
              QTest::keyClick(&tree, Qt::Key_Space);
              QTest::mouseClick(button, Qt::LeftButton);
              EXPECT_FALSE(window.isVisible());
            }),
            CFilterDialog::kIdAsText);
  EXPECT_EQ(m_filter.severities, (std::vector<int>{1, 1, 1}));
}
