#include "docview/ui/dialog_place.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTest>
#include <QVBoxLayout>
#include <map>

#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"

namespace {

constexpr int kPatienceMs = 10000;

class LongQuestion final : public CDialog {
 public:
  using CDialog::CDialog;
  int m_lines = 1;
};

// A column of lines and a row of buttons below it.
class LongQuestionFace final : public QtDialogFace {
 public:
  LongQuestionFace(LongQuestion& question, QWidget* parent) : QtDialogFace(question, parent) {
    auto* const column = new QVBoxLayout(this);
    for (int i = 0; i < question.m_lines; ++i)
      column->addWidget(new QLabel(QString::number(i), this));
    m_field = new QLineEdit(this);
    column->addWidget(m_field);
    m_field->setFocus();
    auto* const buttons = new QHBoxLayout;
    m_button = new QPushButton("Cancel", this);
    connect(m_button, &QPushButton::clicked, this, &QDialog::reject);
    buttons->addWidget(m_button);
    column->addLayout(buttons);
  }
  QLineEdit* m_field;
  QPushButton* m_button;
};

class MemoryOfPlaces final : public DialogPlaces {
 public:
  explicit MemoryOfPlaces(std::map<std::string, QRect>& places) : m_places(places) {}
  std::optional<QRect> PlaceOf(const std::string& dialog) override {
    const auto found = m_places.find(dialog);
    return found == m_places.end() ? std::nullopt : std::optional<QRect>(found->second);
  }
  void Keep(const std::string& dialog, const QRect& place) override { m_places[dialog] = place; }

 private:
  std::map<std::string, QRect>& m_places;
};

class DialogPlaceTest : public testing::Test {
 protected:
  DialogPlaceTest() {
    m_host.RegisterFace<LongQuestion, LongQuestionFace>();
    m_host.SetPlaces(std::make_unique<MemoryOfPlaces>(m_places));
  }
  void Run(LongQuestion& question, const std::function<void(LongQuestionFace&)>& person) {
    m_host.Post(MustRun([person] {
      auto* const face = dynamic_cast<LongQuestionFace*>(QApplication::activeModalWidget());
      ASSERT_TRUE(face);
      person(*face);
      face->reject();
    }));
    question.DoModal();
  }
  std::map<std::string, QRect> m_places;
  QtHost m_host;
};

constexpr char kName[] = "(anonymous namespace)::LongQuestion";
const QRect kRoom(0, 0, 1000, 800);

}  // namespace

TEST(BesideRow, ADialogThatHidesNoRowStaysWhereItIs) {
  EXPECT_EQ(BesideRow(QRect(300, 300, 400, 200), QRect(0, 100, 1000, 20), kRoom), QPoint(300, 300));
}

TEST(BesideRow, OtherwiseItStandsBelowOrAboveTheRow) {
  const QPoint below = BesideRow(QRect(300, 300, 400, 200), QRect(0, 390, 1000, 20), kRoom);
  EXPECT_EQ(below.x(), 300);
  EXPECT_GT(below.y(), 409);
  const QPoint above = BesideRow(QRect(300, 500, 400, 200), QRect(0, 640, 1000, 20), kRoom);
  EXPECT_EQ(above.x(), 300);
  EXPECT_LT(above.y() + 200, 640);
}

TEST(BesideRow, WhereThereIsNoRoomForThatBesideItAndElseWhereItWas) {
  const QPoint right = BesideRow(QRect(300, 10, 300, 780), QRect(100, 390, 500, 20), kRoom);
  EXPECT_GT(right.x(), 599);
  EXPECT_EQ(BesideRow(QRect(300, 10, 400, 780), QRect(0, 390, 1000, 20), kRoom), QPoint(300, 10));
}

TEST_F(DialogPlaceTest, ADialogTallerThanTheScreenScrollsAndItsButtonsAreInReach) {
  LongQuestion question(m_host);
  question.m_lines = 400;
  Run(question, [](LongQuestionFace& face) {
    const QRect room = face.screen()->availableGeometry();
    EXPECT_TRUE(QTest::qWaitFor([&] { return room.contains(face.frameGeometry()); }, kPatienceMs))
        << face.height() << " of " << room.height();
    auto* const area = face.findChild<QScrollArea*>();
    ASSERT_TRUE(area);
    EXPECT_GT(area->widget()->height(), room.height());
    EXPECT_FALSE(area->isAncestorOf(face.m_button));
    const QPoint middle = face.m_button->rect().center();
    EXPECT_TRUE(face.rect().contains(face.m_button->mapTo(&face, middle)));
    EXPECT_TRUE(face.m_button->isVisible());
    EXPECT_EQ(face.focusWidget(), face.m_field) << "where the dialog has put it";
  });
}

TEST_F(DialogPlaceTest, ADialogThatFitsHasNoAreaThatScrolls) {
  LongQuestion question(m_host);
  Run(question, [](LongQuestionFace& face) { EXPECT_FALSE(face.findChild<QScrollArea*>()); });
}

TEST_F(DialogPlaceTest, ADialogComesUpWhereTheUserLeftIt) {
  LongQuestion question(m_host);
  Run(question, [](LongQuestionFace& face) {
    const QPoint before = face.pos();
    QTest::qWait(300);  // after the time in which a window manager places it
    face.move(before + QPoint(40, 30));
    face.resize(face.size() + QSize(50, 60));
  });
  ASSERT_EQ(m_places.size(), 1u);
  EXPECT_EQ(m_places.begin()->first, kName);
  const QRect left = m_places.begin()->second;
  LongQuestion again(m_host);
  Run(again, [left](LongQuestionFace& face) {
    EXPECT_EQ(face.pos(), left.topLeft());
    EXPECT_EQ(face.size(), left.size());
  });
}

TEST_F(DialogPlaceTest, ADialogThatWasNotMovedIsNotRemembered) {
  LongQuestion question(m_host);
  Run(question, [](LongQuestionFace&) { QTest::qWait(300); });
  EXPECT_TRUE(m_places.empty());
}

TEST_F(DialogPlaceTest, APlaceOutsideEveryScreenIsNotTakenAndATooLargeOneIsMadeToFit) {
  LongQuestion question(m_host);
  QRect room;
  QSize own;
  Run(question, [&](LongQuestionFace& face) {
    room = face.screen()->availableGeometry();
    own = face.size();
  });
  m_places[kName] = QRect(room.right() + 5000, 10, own.width() + 77, own.height() + 66);
  LongQuestion away(m_host);
  Run(away, [&](LongQuestionFace& face) {
    EXPECT_TRUE(room.contains(face.frameGeometry()));
    EXPECT_EQ(face.size(), own);
  });
  m_places[kName] = QRect(room.topLeft(), room.size() * 2);
  LongQuestion large(m_host);
  Run(large, [&](LongQuestionFace& face) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return room.contains(face.frameGeometry()); }, kPatienceMs));
  });
}
