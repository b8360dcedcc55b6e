#include <gtest/gtest.h>

#include "support/clipboard_contract.h"
#include "support/recording_host.h"

TEST(Clipboard, OfATestHoldsATextAsItIs) {
  RecordingHost host;
  CheckClipboard(host, [&host] { return host.m_clipboard; });
}
