// The test program's start: an application object, and nothing of the user's settings.
#include <gtest/gtest.h>

#include <QApplication>

#include "support/hang_guard.h"
#include "support/pending_actions.h"
#include "support/temp_dir.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const TempDir config;
  qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(config.Path()));
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  testing::UnitTest::GetInstance()->listeners().Append(new PendingActions);
  testing::UnitTest::GetInstance()->listeners().Append(new HangGuard);
  return RUN_ALL_TESTS();
}
