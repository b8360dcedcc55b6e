#include "docview/ui/dialog_parts.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "docview/ui/qt_dialog_face.h"
#include "docview/wnd.h"
#include "support/recording_host.h"

namespace {

TEST(DialogParts, AControlIsNamedByItsIdAndSpokenOfByItsTextAlone) {
  EXPECT_EQ(AccessibleName("Search &Text:"), "Search Text");
  EXPECT_EQ(AccessibleName("< &Back"), "Back");
  EXPECT_EQ(AccessibleName("&Info, Warnings, && Errors"), "Info, Warnings, & Errors");
  EXPECT_EQ(AccessibleName("Time: UTC"), "Time: UTC");
  QWidget window;
  const QPushButton* const button = MakeButton(1058, "&Next >", &window);
  EXPECT_EQ(button->objectName(), "1058");
  EXPECT_EQ(button->accessibleName(), "Next");
  const QCheckBox* const box = MakeCheckBox(1081, "Ignore &Case", &window);
  EXPECT_EQ(box->objectName(), "1081");
  EXPECT_EQ(box->accessibleName(), "Ignore Case");
}

TEST(DialogParts, APlainLabelShowsMarkupAsItIs) {
  QWidget window;
  EXPECT_EQ(MakePlainLabel("<b>web</b>", &window)->textFormat(), Qt::PlainText);
}

TEST(DialogParts, TheButtonsOfADialogDoWhatTheySay) {
  class Asked final : public CWnd {
   public:
    explicit Asked(Host& host) : CWnd(host) {
      host.SetMainWindow(this);
      MapCommand(57670, [this] { ++times; });
    }
    int times = 0;
  };
  RecordingHost host;
  Asked main(host);
  CDialog dialog(host);
  QtDialogFace face(dialog, nullptr);
  const DialogButtons buttons = MakeDialogButtons(face, true);
  EXPECT_TRUE(buttons.ok->isDefault());
  face.findChild<QPushButton*>("57670")->click();
  EXPECT_EQ(main.times, 1);
  EXPECT_FALSE(dialog.Ended());
  face.findChild<QPushButton*>("2")->click();
  EXPECT_EQ(dialog.Result(), CDialog::kIdCancel);
  dialog.EndDialog(0);
  buttons.ok->click();
  EXPECT_EQ(dialog.Result(), CDialog::kIdOk);
  QtDialogFace plain(dialog, nullptr);
  MakeDialogButtons(plain, false);
  EXPECT_FALSE(plain.findChild<QPushButton*>("57670"));
  host.SetMainWindow(nullptr);
}

}  // namespace
