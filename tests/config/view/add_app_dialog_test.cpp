#include "config/view/add_app_dialog.h"

#include <gmock/gmock.h>

#include "support/recording_host.h"

namespace {

using testing::ElementsAre;

TEST(AddAppDialog, OffersTheNamesOfItsSetAndOkIsDisabledAtTheStart) {
  RecordingHost host;
  const CAddAppDialog dialog(host, {"orders", "billing"});
  EXPECT_THAT(dialog.Items(), ElementsAre("billing", "orders"));
  EXPECT_FALSE(dialog.MayOK());
}

TEST(AddAppDialog, OkIsEnabledExactlyWhileAtLeastOneItemIsSelected) {
  RecordingHost host;
  CAddAppDialog dialog(host, {"a", "b", "c"});
  dialog.OnSelect({1});
  EXPECT_TRUE(dialog.MayOK());
  dialog.OnSelect({0, 2});
  EXPECT_TRUE(dialog.MayOK());
  dialog.OnSelect({});
  EXPECT_FALSE(dialog.MayOK());
  dialog.OnSelect({3});
  EXPECT_FALSE(dialog.MayOK()) << "no such item";
}

TEST(AddAppDialog, OkReplacesTheSetByTheChosenNames) {
  RecordingHost host;
  CAddAppDialog dialog(host, {"a", "b", "c"});
  host.AnswerDialog([&](CDialog&) {
    dialog.OnSelect({2, 0});
    dialog.OnOK();
  });
  EXPECT_EQ(dialog.DoModal(), CDialog::kIdOk);
  EXPECT_THAT(dialog.m_names, ElementsAre("a", "c"));
}

TEST(AddAppDialog, WithoutASelectionItStaysOpenAndAnEmptyOneCanOnlyBeCancelled) {
  RecordingHost host;
  CAddAppDialog dialog(host, {});
  EXPECT_THAT(dialog.Items(), ElementsAre());
  dialog.OnOK();
  EXPECT_FALSE(dialog.Ended());
  dialog.OnCancel();
  EXPECT_EQ(dialog.Result(), CDialog::kIdCancel);
}

TEST(AddAppDialog, CancelLeavesTheSet) {
  RecordingHost host;
  CAddAppDialog dialog(host, {"a", "b"});
  dialog.OnSelect({0});
  dialog.OnCancel();
  EXPECT_THAT(dialog.m_names, ElementsAre("a", "b"));
}

}  // namespace
