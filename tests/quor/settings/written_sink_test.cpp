#include "quor/settings/written_sink.h"

#include <gtest/gtest.h>

namespace {

std::string Shown(std::string_view text) {
  std::string why;
  const auto sink = WrittenSink::Read(text, &why);
  if (!sink) return "no: " + why;
  return (sink->file ? "file " : "socket ") + sink->name + " [" + sink->options + "]";
}

TEST(WrittenSinkTest, AFileHasAPathAndOptions) {
  EXPECT_EQ(Shown("file:/tmp/a.trc"), "file /tmp/a.trc []");
  EXPECT_EQ(Shown(" FILE:a.trc?maxsize=10&MaxFiles=3&flush=1 "),
            "file a.trc [maxsize=10;maxfiles=3;flush=1;]");
  EXPECT_EQ(Shown("file:/tmp/a?b.trc?flush=0"), "file /tmp/a?b.trc [flush=0;]");
}

TEST(WrittenSinkTest, ASocketHasAMachine) {
  EXPECT_EQ(Shown("socket:orders1:7447"), "socket orders1:7447 []");
  EXPECT_EQ(Shown("socket:orders1?node=a"), "socket orders1 [node=a;]");
}

TEST(WrittenSinkTest, WhatCannotBeUsedIsNoSinkAndSaysWhy) {
  EXPECT_EQ(Shown("fiel:a.trc"),
            "no: \"fiel:a.trc\" begins neither with \"file:\" nor with \"socket:\"; did you mean "
            "\"file:\"?");
  EXPECT_EQ(Shown("orders1"), "no: \"orders1\" begins neither with \"file:\" nor with \"socket:\"");
  EXPECT_EQ(Shown("file:"), "no: it names no file");
  EXPECT_EQ(Shown("socket:?a=b"), "no: it names no machine");
  EXPECT_EQ(Shown("file:a?maxsze=1"),
            "no: \"maxsze\" is no option of a file; did you mean \"maxsize\"?");
  EXPECT_EQ(Shown("file:a?maxsize=1&maxsize=2"), "no: \"maxsize\" stands there twice");
  EXPECT_EQ(Shown("file:a?maxsize=big"), "no: \"maxsize=big\" takes a number");
  EXPECT_EQ(Shown("file:a?maxsize=99999999999"), "no: \"maxsize=99999999999\" takes a number");
  EXPECT_EQ(Shown("file:a?flush=2"), "no: \"flush=2\" takes 0 or 1");
  EXPECT_EQ(Shown("file:a?"), "no: \"\" is no option of a file");
}

}  // namespace
