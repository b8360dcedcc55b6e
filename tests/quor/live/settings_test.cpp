// The written form of settings and sinks, with a real service and real programs.
#include "live_fixture.h"

namespace {

using nlohmann::json;
using Settings = std::map<std::string, unsigned>;

class LiveSettingsTest : public LiveProgramsTest {
 protected:
  // By "COMPONENT/CATEGORY".
  static Settings SettingsOfApp(const std::string& app) {
    Settings settings;
    const TrcRun run = RunTrc({"show", app, "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    if (run.status != 0) return settings;
    const json shown = json::parse(run.out);
    for (const json& component : shown["components"])
      for (const json& category : component["categories"])
        settings[component["name"].get<std::string>() + "/" + category["name"].get<std::string>()] =
            category["settings"];
    return settings;
  }
};

TEST_F(LiveSettingsTest, RulesSetSeveralTracesAtOnceAndTheMostExactHolds) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "10"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const TrcRun run =
      RunTrc({"set", "orders", "net=Max;*=off", "DB/close=info+Stack;Net/Close=off"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(SettingsOfApp("orders"), (Settings{{"Db/Close", 0x201},
                                               {"Db/Connect", 0},
                                               {"Db/Request", 0},
                                               {"Net/Close", 0},
                                               {"Net/Connect", 799},
                                               {"Net/Request", 799}}));
  // What no rule is for stays as it is.
  EXPECT_EQ(RunTrc({"set", "localhost", "orders", "Db=support"}).status, 0);
  EXPECT_EQ(SettingsOfApp("orders").at("Net/Connect"), 799u);
  EXPECT_EQ(SettingsOfApp("orders").at("Db/Close"), 7u);
  EXPECT_EQ(RunTrc({"set", "orders", "net/connect", "info", "STACK"}).status, 0);
  EXPECT_EQ(SettingsOfApp("orders").at("Net/Connect"), 0x201u);
}

TEST_F(LiveSettingsTest, ASinkIsOneWordToo) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "10"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const std::string path = m_dir.File("own.trc");
  EXPECT_EQ(RunTrc({"sink", "orders", "file:" + path + "?maxsize=5&flush=1"}).status, 0);
  EXPECT_EQ(json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"],
            (json{{"type", "file"}, {"name", path}, {"options", "maxsize=5;flush=1;"}}));
  EXPECT_TRUE(Eventually([&] { return std::filesystem::exists(path); }));
  EXPECT_EQ(RunTrc({"sink", "orders", "socket:localhost"}).status, 0);
  EXPECT_EQ(json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"]["type"], "socket");
}

}  // namespace
