#include "symbols/stack_names.h"

#include <gtest/gtest.h>

namespace {

TEST(StackNames, TheWrittenFormReadsBackAsItWas) {
  const StackNames names = {{{"Charge(int) at /src/pay.cpp:12 (orders)",
                              "/usr/bin/orders+0x12 [aaaa]", "/src/pay.cpp", 12},
                             {"main", "main", "", 0}},
                            {"no names for libfoo.so", "and more"}};
  EXPECT_EQ(ReadNames(WriteNames(names)), names);
  EXPECT_EQ(ReadNames(""), StackNames());
}

TEST(StackNames, AControlCharacterInAPartCannotMakeAnotherPart) {
  const StackNames names = {{{"a\tb\nm", "r\n", "f\t", 1}}, {"m\nf1\t"}};
  const StackNames read = {{{"a?b?m", "r?", "f?", 1}}, {"m?f1?"}};
  EXPECT_EQ(ReadNames(WriteNames(names)), read);
}

TEST(StackNames, WhatIsNotSuchAFormIsRefused) {
  for (const char* text : {"x\n", "f1\ta\tb\n", "f\ta\tb\tc\n", "fx\ta\tb\tc\n", "f1\ta\tb\tc",
                           "\n", "f99999999999\ta\tb\tc\n", "f-1\ta\tb\tc\n"})
    EXPECT_EQ(ReadNames(text), std::nullopt) << text;
}

}  // namespace
