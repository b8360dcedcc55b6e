#include "docview/dialogs/dialog.h"

#include <gtest/gtest.h>

#include "support/recording_host.h"

TEST(ModalDialog, IsTheInnermostOneThatRuns) {
  RecordingHost host;
  CDialog outer(host), inner(host);
  host.AnswerDialog([&](CDialog&) {
    EXPECT_EQ(host.ModalDialog(), &outer);
    host.AnswerDialog([&](CDialog&) { EXPECT_EQ(host.ModalDialog(), &inner); });
    inner.DoModal();
    EXPECT_EQ(host.ModalDialog(), &outer);
  });
  EXPECT_EQ(host.ModalDialog(), nullptr);
  outer.DoModal();
  EXPECT_EQ(host.ModalDialog(), nullptr);
}
