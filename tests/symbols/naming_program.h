// A program in the place of the one that names stacks: it gives the same names for each stack.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "support/temp_dir.h"
#include "support/wait_for.h"

class NamingProgram {
 public:
  enum What { kAnswers, kHangsUntilToldTo };

  // The first frame is in line 12 of this file.
  explicit NamingProgram(What what, const std::string& file = "pay.cpp")
      : m_told(m_dir.File("told")), m_started(m_dir.File("started")) {
    const std::string names = "f12\t" + file +
                              "\t/usr/bin/orders+0x12ab [0a1b2c3d4e5f]\tCharge() at pay.cpp:12 "
                              "(orders)\nmno names for libfoo.so\n";
    const std::string head{static_cast<char>(names.size() & 0xFF),
                           static_cast<char>(names.size() >> 8), '\0', '\0'};
    m_dir.File("answer", head + names);
    const std::string wait =
        what == kAnswers ? "" : "while ! [ -e '" + m_told + "' ]; do sleep 0.02; done\n";
    m_dir.File("program", "#!/bin/sh\n: > '" + m_started + "'\n" + wait + "cat '" +
                              m_dir.File("answer") + "' >&0\nexec sleep 600\n");
    chmod(Path().c_str(), 0700);
  }

  std::string Path() const { return m_dir.File("program"); }
  void AwaitStart() const {
    EXPECT_TRUE(WaitFor([&] { return std::filesystem::exists(m_started); }));
  }
  void Tell() const { std::ofstream(m_told) << "go"; }

 private:
  TempDir m_dir;
  const std::string m_told, m_started;
};
