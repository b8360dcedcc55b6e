#include "config/traces/ui/modify_trace_face.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <functional>

#include "config/traces/trace_item.h"
#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"

namespace {

using Face = ModifyTraceFace;

class ModifyTraceFaceTest : public testing::Test {
 protected:
  ModifyTraceFaceTest() { m_host.RegisterFace<CModifyTraceDialog, ModifyTraceFace>(); }
  // Runs the dialog for these settings; gives those after OK, and 0xFFFF after a cancel.
  unsigned Run(unsigned settings, const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* const window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    CModifyTraceDialog dialog(m_host, settings);
    return dialog.DoModal() == CDialog::kIdOk ? dialog.GetDialogSettings() : 0xFFFF;
  }
  template <class Widget>
  static Widget& Control(QDialog& window, unsigned id) {
    return *window.findChild<Widget*>(QString::number(id));
  }
  // "010 001 1100": modes, severities and boxes that are checked; "-" behind it when disabled.
  static std::string Shown(QDialog& window) {
    std::string text;
    for (const unsigned first : {Face::kModes, Face::kSeverities})
      for (unsigned place = 0; place < 3; ++place)
        text += std::string(place == 0 && !text.empty() ? " " : "") +
                (Control<QRadioButton>(window, first + place).isChecked() ? "1" : "0");
    text += ' ';
    for (unsigned place = 0; place < 4; ++place)
      text += Control<QCheckBox>(window, Face::kBoxes + place).isChecked() ? '1' : '0';
    bool any = false, all = true;
    for (unsigned id = Face::kSeverities; id < Face::kBoxes + 4; ++id) {
      const bool enabled = Control<QWidget>(window, id).isEnabled();
      any = any || enabled;
      all = all && enabled;
    }
    EXPECT_EQ(any, all) << "they are enabled together";
    return text + (all ? "" : " -");
  }

  QtHost m_host;
};

}  // namespace

TEST_F(ModifyTraceFaceTest, HasItsCaptionAndTheTextsOfItsControls) {
  Run(7, [](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Modify Trace");
    EXPECT_EQ(window.findChild<QGroupBox*>()->title(), "Severity");
    QStringList radios, boxes;
    for (const QRadioButton* radio : window.findChildren<QRadioButton*>()) radios << radio->text();
    for (const QCheckBox* box : window.findChildren<QCheckBox*>()) boxes << box->text();
    EXPECT_EQ(radios, (QStringList{"O&ff", "&Custom", "&Maximum", "&Errors only",
                                   "&Warnings && Errors", "&Info, Warnings, && Errors"}));
    EXPECT_EQ(boxes, (QStringList{"Include &Developer Traces", "Include &Verbose Traces",
                                  "Include Source Locatio&n", "Include Callstac&k"}));
    EXPECT_EQ(Control<QRadioButton>(window, Face::kSeverities + 1).accessibleName(),
              "Warnings & Errors");
    EXPECT_TRUE(Control<QPushButton>(window, CDialog::kIdOk).isDefault());
  });
}

TEST_F(ModifyTraceFaceTest, ShowsFixedPicturesForOffAndMaximumAndStartsCustomFromThem) {
  Run(4, [](QDialog& window) {
    EXPECT_EQ(Shown(window), "010 100 0000");
    Control<QRadioButton>(window, Face::kModes + 2).click();
    EXPECT_EQ(Shown(window), "001 001 1111 -");
    Control<QRadioButton>(window, Face::kModes + 1).click();
    EXPECT_EQ(Shown(window), "010 001 1111");
    Control<QRadioButton>(window, Face::kModes).click();
    EXPECT_EQ(Shown(window), "100 000 0000 -");
    Control<QRadioButton>(window, Face::kModes + 1).click();
    EXPECT_EQ(Shown(window), "010 001 0000");
  });
}

TEST_F(ModifyTraceFaceTest, CanBeUsedByItsAccessKeysAlone) {
  EXPECT_EQ(Run(0,
                [](QDialog& window) {
                  EXPECT_EQ(Shown(window), "100 000 0000 -");
                  for (const int key : {Qt::Key_C, Qt::Key_E, Qt::Key_V, Qt::Key_K})
                    QTest::keyClick(&window, static_cast<Qt::Key>(key), Qt::AltModifier);
                  EXPECT_EQ(Shown(window), "010 100 0101");
                  QTest::keyClick(&window, Qt::Key_Return);
                }),
            0x0214u);
}

TEST_F(ModifyTraceFaceTest, EscCancels) {
  EXPECT_EQ(Run(7, [](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); }), 0xFFFFu);
}
