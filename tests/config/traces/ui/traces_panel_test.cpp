#include "config/traces/ui/traces_panel.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <map>
#include <stdexcept>
#include <string>

#include "support/row_texts.h"
#include "support/traces_controls_contract.h"

namespace {

class TracesPanelHarness {
 public:
  explicit TracesPanelHarness(CTracesList& traces)
      : m_panel(*new TracesPanel(
            traces, "Select the &traces you want to change:",
            [this](const std::function<void()>& call) {
              ++m_forwarded;
              call();
            },
            &m_window)) {
    auto* const layout = new QVBoxLayout(&m_window);
    layout->addWidget(&m_panel);
    layout->addWidget(new QPushButton("OK", &m_window));  // the next for the focus
    m_window.resize(600, 300);
    m_window.show();
    m_window.activateWindow();
    QApplication::processEvents();
  }
  TracesPanel& Panel() { return m_panel; }
  QTreeView& List() const { return *m_panel.findChild<QTreeView*>("traces"); }
  QList<QPushButton*> Buttons() const { return m_panel.findChildren<QPushButton*>(); }
  QPushButton& Button(const QString& text) const {
    for (QPushButton* const button : Buttons())
      if (button->text() == text) return *button;
    throw std::invalid_argument("no button " + text.toStdString());
  }
  int Forwarded() const { return m_forwarded; }

  std::string Shown() const { return RowTexts(*List().model()); }
  bool ButtonsEnabled() const {
    const QList<QPushButton*> buttons = Buttons();
    const auto enabled = [](const QPushButton* button) { return button->isEnabled(); };
    const auto count = std::count_if(buttons.begin(), buttons.end(), enabled);
    EXPECT_TRUE(count == 0 || count == buttons.size()) << count;
    return count != 0;
  }
  void PressPreset(unsigned settings) {
    static const std::map<unsigned, QString> texts = {{TRC_PRESET_OFF, "O&ff"},
                                                      {TRC_PRESET_SUPPORT, "&Support"},
                                                      {TRC_PRESET_DEVELOPER, "&Developer"},
                                                      {TRC_PRESET_MAX, "&Max"}};
    Press(texts.at(settings));
  }
  void PressCustom() { Press("&Custom"); }
  void Click(int row, int column) {
    QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, At(row, column));
  }
  void DoubleClick(int row, int column) {
    Click(row, column);
    QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, At(row, column));
  }

 private:
  void Press(const QString& text) { QTest::mouseClick(&Button(text), Qt::LeftButton); }
  QPoint At(int row, int column) const {
    return List().visualRect(List().model()->index(row, column)).center();
  }
  int m_forwarded = 0;
  QDialog m_window;
  TracesPanel& m_panel;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, TracesControlsContract, TracesPanelHarness);

using TracesPanelTest = TracesControlsContract<TracesPanelHarness>;

TEST_F(TracesPanelTest, HasItsLabelAndFiveButtonsBesideTheList) {
  const auto* const label = Controls().Panel().findChild<QLabel*>();
  EXPECT_EQ(label->text(), "Select the &traces you want to change:");
  EXPECT_EQ(label->buddy(), &Controls().List());
  QStringList texts, spoken;
  for (const QPushButton* button : Controls().Buttons()) {
    texts << button->text();
    spoken << button->accessibleName();
    EXPECT_FALSE(button->autoDefault()) << "Enter is the sheet's";
    EXPECT_GT(button->x(), Controls().List().geometry().right());
  }
  EXPECT_EQ(texts, (QStringList{"O&ff", "&Support", "&Developer", "&Max", "&Custom"}));
  EXPECT_EQ(spoken, (QStringList{"Off", "Support", "Developer", "Max", "Custom"}));
}

TEST_F(TracesPanelTest, EachButtonHasItsAccessKeyAndIsForwarded) {
  Controls().Click(0, 0);
  AnswerModify(TRC_PRESET_SUPPORT);
  for (const Qt::Key key : {Qt::Key_F, Qt::Key_M, Qt::Key_D, Qt::Key_S, Qt::Key_C})
    QTest::keyClick(&Controls().Panel(), key, Qt::AltModifier);
  EXPECT_EQ(Settings(0), TRC_PRESET_MAX);
  EXPECT_EQ(Controls().Forwarded(), 5);
}

TEST_F(TracesPanelTest, WithTheSelectionTheButtonsLoseTheFocusToTheList) {
  Controls().Click(0, 0);
  Controls().Button("&Max").setFocus();
  ASSERT_EQ(Controls().Panel().focusWidget(), &Controls().Button("&Max"));
  Fill();
  EXPECT_FALSE(Controls().ButtonsEnabled());
  EXPECT_EQ(Controls().Panel().focusWidget(), &Controls().List());
}

}  // namespace
