// main() of a test program that needs an application object. Include it in one file of the program.
//
// Settings of the library itself (the file dialog keeps some) go to a folder that is removed again.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <clocale>

#include "support/hang_guard.h"
#include "support/pending_actions.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QTemporaryDir config;
  qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  QApplication::setQuitOnLastWindowClosed(false);
  testing::UnitTest::GetInstance()->listeners().Append(new PendingActions);
  testing::UnitTest::GetInstance()->listeners().Append(new HangGuard);
  return RUN_ALL_TESTS();
}
