#include "records/process_name.h"

#include <gtest/gtest.h>

namespace {

void ExpectParts(std::string_view name, std::string_view process, std::string_view account) {
  const ProcessName parts = ProcessName::Of(name);
  EXPECT_EQ(parts.process, process) << name;
  EXPECT_EQ(parts.account, account) << name;
}

TEST(ProcessNameTest, AnAccountStandsBehindTheNumber) {
  ExpectParts("4711 alice", "4711", "alice");
  ExpectParts("1 www-data", "1", "www-data");
  ExpectParts("7 1000", "7", "1000");  // an account without a name
}

TEST(ProcessNameTest, AnyOtherNameIsThatOfAProcessAlone) {
  for (const char* name : {"", "4711", "web", "web server", "4711 ", " alice", "47x 11", "-1 alice",
                           "1 2 alice", "4711  alice", "4711\talice"})
    ExpectParts(name, name, "");
}

}  // namespace
