// What a host with a clipboard does with a text; runs against the recording host and against Qt's.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "docview/host.h"

// `clipboard` gives the text that another program would paste.
inline void CheckClipboard(Host& host, const std::function<std::string()>& clipboard) {
  for (const std::string& text : {std::string("a\tb\r\nzwölf \xF0\x9F\x90\x9F\n"), std::string(),
                                  std::string(300'000, 'x')}) {
    EXPECT_TRUE(host.PutOnClipboard(text));
    EXPECT_EQ(clipboard(), text);
  }
}
