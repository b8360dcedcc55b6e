#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>

#include "docview/ui/qt_host.h"
#include "support/clipboard_contract.h"

TEST(Clipboard, OfTheScreenHoldsATextAsItIs) {
  QtHost host;
  CheckClipboard(host, [] { return QGuiApplication::clipboard()->text().toStdString(); });
}
