#include "quor/protocol/machine.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

namespace {

std::string Meaning(const std::string& text) {
  std::string why;
  const auto machine = ParseMachine(text, &why);
  if (!machine) return why;
  return machine->local ? "local" : machine->host + " at " + std::to_string(machine->port);
}

TEST(Machine, TheLocalServiceHasManyNames) {
  for (const std::string text : {"", "localhost", "LocalHost", "127.0.0.1", "::1"})
    EXPECT_EQ(Meaning(text), "local") << text;
}

TEST(Machine, TheOwnHostNameIsLocalInAnyCase) {
  std::string name = LocalHostName();
  EXPECT_EQ(Meaning(name), "local");
  for (char& letter : name) letter = static_cast<char>(std::toupper(letter));
  EXPECT_EQ(Meaning(name), "local");
}

// In a process of its own, whose host has another name; 77 where no such process can be made.
int InHost(const std::string& name, const std::function<bool()>& holds) {
  const pid_t child = fork();
  if (child == 0) {
    if (unshare(geteuid() == 0 ? CLONE_NEWUTS : CLONE_NEWUSER | CLONE_NEWUTS) != 0 ||
        sethostname(name.data(), name.size()) != 0)
      _exit(77);
    _exit(holds() ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Machine, AHostNameWithADomainIsLocalWithAndWithoutIt) {
  const int result = InHost("orders1.example.org", [] {
    return LocalHostName() == "orders1" && Meaning("orders1") == "local" &&
           Meaning("Orders1.Example.org") == "local" &&
           Meaning("orders1.example.com") == "orders1.example.com at 7447";
  });
  EXPECT_TRUE(result == 0 || (result == 77 && geteuid() != 0)) << result;
}

TEST(Machine, TheHostNameHasNoDomainAndIsNeverEmpty) {
  EXPECT_NE(LocalHostName(), "");
  EXPECT_EQ(LocalHostName().find('.'), std::string::npos);
}

TEST(Machine, ANameOrAddressWithOrWithoutAPortIsAnotherService) {
  EXPECT_EQ(Meaning("orders-far-away"), "orders-far-away at 7447");
  EXPECT_EQ(Meaning("orders-far-away:80"), "orders-far-away at 80");
  EXPECT_EQ(Meaning("10.1.2.3:65535"), "10.1.2.3 at 65535");
  EXPECT_EQ(Meaning("[fe80::7]:7000"), "fe80::7 at 7000");
  EXPECT_EQ(Meaning("[fe80::7]"), "fe80::7 at 7447");
  EXPECT_EQ(Meaning("fe80::7"), "fe80::7 at 7447");
}

TEST(Machine, APortMakesEvenThisMachineAnAddressOnTheNetwork) {
  EXPECT_EQ(Meaning("localhost:7447"), "localhost at 7447");
  EXPECT_EQ(Meaning("[::1]:9"), "::1 at 9");
}

TEST(Machine, WhatNamesNoMachineIsRefusedWithAReason) {
  EXPECT_EQ(Meaning("far:"), "\"\" is not a port");
  EXPECT_EQ(Meaning("far:0"), "\"0\" is not a port");
  EXPECT_EQ(Meaning("far:65536"), "\"65536\" is not a port");
  EXPECT_EQ(Meaning("far:+1"), "\"+1\" is not a port");
  EXPECT_EQ(Meaning("far:1x"), "\"1x\" is not a port");
  EXPECT_EQ(Meaning(":80"), "\":80\" names no machine");
  EXPECT_EQ(Meaning("a b"), "\"a b\" names no machine");
  EXPECT_EQ(Meaning("far/away"), "\"far/away\" names no machine");
  EXPECT_EQ(Meaning("[::2"), "\"[::2\": the bracket is not closed");
  EXPECT_EQ(Meaning("[::2]80"), "\"[::2]80\" names no machine");
  EXPECT_EQ(Meaning(std::string(254, 'a')).substr(0, 3), "\"aa");
}

}  // namespace
