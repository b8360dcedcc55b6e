#include "quor/address/relay_address.h"

#include <gtest/gtest.h>

namespace {

using From = RelayAddress::Since::From;

RelayAddress Parsed(const std::string& text) {
  std::string why;
  const auto address = ParseRelayAddress(text, &why);
  EXPECT_TRUE(address) << text << ": " << why;
  return address.value_or(RelayAddress{});
}

std::string WhyNot(const std::string& text) {
  std::string why;
  EXPECT_FALSE(ParseRelayAddress(text, &why)) << text;
  return why;
}

TEST(RelayAddress, ServersAndAStreamAreEnough) {
  const RelayAddress address = Parsed("nats://localhost/QUOR1");
  EXPECT_EQ(address.ServerTexts(), std::vector<std::string>{"localhost:4222"});
  EXPECT_EQ(address.stream, "QUOR1");
  EXPECT_EQ(address.machine + address.app, "");
  EXPECT_EQ(address.since, RelayAddress::Since{});
  EXPECT_FALSE(address.tls);
}

TEST(RelayAddress, EveryPartIsRead) {
  const RelayAddress address = Parsed(
      "tls://n1.example,n2.example:5222,[fd00::2]:6222/MY-1?machine=web1&app=orders&since=10m");
  EXPECT_EQ(address.ServerTexts(),
            (std::vector<std::string>{"n1.example:4222", "n2.example:5222", "[fd00::2]:6222"}));
  EXPECT_EQ(address.stream, "MY-1");
  EXPECT_EQ(address.machine, "web1");
  EXPECT_EQ(address.app, "orders");
  EXPECT_EQ(address.since.from, From::Ago);
  EXPECT_EQ(address.since.ago, std::chrono::minutes(10));
  EXPECT_TRUE(address.tls);
}

TEST(RelayAddress, OnlyThisMachineIsReachedWithoutTls) {
  for (const char* const here : {"localhost", "127.0.0.1", "127.3.2.1:5", "[::1]", "[::1]:99"})
    EXPECT_FALSE(Parsed("nats://" + std::string(here) + "/S").tls) << here;
  for (const char* const away : {"n1", "127.0.0.1.example", "127.0.0.256", "127.1", "localhost,n2",
                                 "localhost.example", "[::2]", "128.0.0.1"})
    EXPECT_TRUE(Parsed("nats://" + std::string(away) + "/S").tls) << away;
  EXPECT_TRUE(Parsed("tls://localhost/S").tls);
}

TEST(RelayAddress, SinceIsATimeAgoATimeTheStartOrNow) {
  const auto since = [](const std::string& text) {
    return Parsed("nats://localhost/S?since=" + text).since;
  };
  EXPECT_EQ(since("now").from, From::Now);
  EXPECT_EQ(since("start").from, From::Start);
  EXPECT_EQ(since("90s").ago, std::chrono::seconds(90));
  EXPECT_EQ(since("2h").ago, std::chrono::hours(2));
  EXPECT_EQ(since("3650d").ago, std::chrono::days(3650));
  using namespace std::chrono;
  EXPECT_EQ(since("2026-11-22T00:30Z").time, sys_days(2026y / 11 / 22) + 30min);
  EXPECT_EQ(since("2024-02-29T23:59:58Z").time, sys_days(2024y / 2 / 29) + 23h + 59min + 58s);
}

TEST(RelayAddress, ASinceThatIsNoTimeIsRefused) {
  for (const char* const wrong :
       {"m", "10", "10w", "-1m", "+1m", "1.5h", " 1m", "1m ", "2026-11-22", "2026-11-22T00:30",
        "2026-02-29T00:30Z", "2026-13-01T00:30Z", "2026-11-22T24:00Z", "2026-11-22T00:60Z",
        "2026-11-22T00:30:60Z", "2026-11-22 00:30Z", "1969-01-01T00:00Z", "yesterday", "NOW"})
    EXPECT_NE(WhyNot("nats://localhost/S?since=" + std::string(wrong)).find("since="),
              std::string::npos)
        << wrong;
  EXPECT_EQ(WhyNot("nats://localhost/S?since=3651d"), "since=3651d: that is longer than ten years");
  EXPECT_EQ(WhyNot("nats://localhost/S?since=99999999999d"),
            "since=99999999999d: it is now, start, a time ago as 10m, or a time as "
            "2026-11-22T00:30Z");
}

TEST(RelayAddress, ANameMayHaveAnyByteButZero) {
  const RelayAddress address = Parsed("nats://localhost/S?app=a%20b%26c%3D%25%C3%A9&machine=w=1");
  EXPECT_EQ(address.app, "a b&c=%\xC3\xA9");
  EXPECT_EQ(address.machine, "w=1");
  for (const char* const wrong : {"%", "%2", "%2g", "%g2", "a%00"})
    EXPECT_NE(WhyNot("nats://localhost/S?app=" + std::string(wrong)).find("after %"),
              std::string::npos)
        << wrong;
}

TEST(RelayAddress, AMalformedAddressIsRefusedInWords) {
  EXPECT_EQ(WhyNot("web1"), "\"web1\" does not begin with nats:// or tls://");
  EXPECT_EQ(WhyNot("nats://"), "\"\" names no server");
  EXPECT_EQ(WhyNot("nats:///S"), "\"\" names no server");
  EXPECT_EQ(WhyNot("nats://a,,b/S"), "\"\" names no server");
  EXPECT_EQ(WhyNot("nats://a b/S"), "\"a b\" names no server");
  EXPECT_EQ(WhyNot("nats://me:x@a/S"),
            "\"me:x@a\": a certificate says who you are, not a name before @");
  EXPECT_EQ(WhyNot("nats://a:0/S"), "\"0\" is not a port");
  EXPECT_EQ(WhyNot("nats://a:65536/S"), "\"65536\" is not a port");
  EXPECT_EQ(WhyNot("nats://a:/S"), "\"\" is not a port");
  EXPECT_EQ(WhyNot("nats://[::1/S"), "\"[::1\": the bracket is not closed");
  EXPECT_EQ(WhyNot("nats://[::1]x/S"), "\"[::1]x\" names no server");
  EXPECT_EQ(WhyNot("nats://a"),
            "\"nats://a\" names no stream: write it behind the servers, as /QUOR1");
  EXPECT_EQ(WhyNot("nats://a/b/c"), "\"b/c\" cannot be the name of a stream");
  EXPECT_EQ(WhyNot("nats://a/b.c"), "\"b.c\" cannot be the name of a stream");
  EXPECT_EQ(WhyNot("nats://a/S?app"), "\"app\" has no value");
  EXPECT_EQ(WhyNot("nats://a/S?app="), "\"app\" has no value");
  EXPECT_EQ(WhyNot("nats://a/S?app=b&app=c"), "\"app\" stands twice in the address");
  EXPECT_EQ(WhyNot("nats://a/S?host=b"), "\"host\" is none of machine, app and since");
}

TEST(RelayAddress, EveryLengthIsBounded) {
  EXPECT_EQ(WhyNot("nats://a/S?app=" + std::string(5000, 'x')),
            "an address of more than 4096 bytes");
  EXPECT_NE(WhyNot("nats://" + std::string(254, 'h') + "/S").find("names no server"),
            std::string::npos);
  EXPECT_NE(WhyNot("nats://a/" + std::string(65, 's')).find("cannot be the name"),
            std::string::npos);
  std::string many = "a";
  for (int i = 1; i < 16; ++i) many += ",a";
  EXPECT_EQ(Parsed("nats://" + many + "/S").servers.size(), 16u);
  EXPECT_EQ(WhyNot("nats://" + many + ",a/S"), "an address names at most 16 servers");
  EXPECT_EQ(WhyNot(std::string("nats://a/S?app=b\0c", 18)), "an address with a byte 0");
}

TEST(RelayAddress, ItsTextParsesToTheSameAddress) {
  for (const char* const text :
       {"nats://localhost:4222/QUOR1", "tls://n1:4222,[fd00::1]:7/S_1?machine=a%20b&app=%25",
        "nats://127.0.0.1:1/S?since=start", "nats://[::1]:1/S?since=90s",
        "nats://[::1]:1/S?app=x&since=2d", "nats://[::1]:1/S?since=2026-11-22T00%3A30%3A00Z"})
    EXPECT_EQ(RelayAddressText(Parsed(text)), text);
}

TEST(RelayAddress, AMachinesNameIsNone) {
  EXPECT_TRUE(IsRelayAddress("nats://a/S"));
  EXPECT_TRUE(IsRelayAddress("tls://"));
  for (const char* const machine : {"", "web1", "web1:7447", "[::1]:7447", "nats", "nats:4222"})
    EXPECT_FALSE(IsRelayAddress(machine)) << machine;
}

}  // namespace
