// quor-bridge init: what an engine needs before anybody publishes or reads there.
#include <cstdio>
#include <thread>

#include "engine_options.h"
#include "quor/cluster/wanted.h"
#include "quor/engine/jetstream/stream_setup.h"
#include "usage.h"
#include "verbs.h"

namespace {

using Made = StreamSetup::Made;

// A new cluster chooses its leaders first.
constexpr std::chrono::seconds kFirstPatience{5}, kPatience{20};
constexpr std::uint64_t kGibi = 1ull << 30;

struct Unit {
  char letter;
  std::uint64_t factor;
};
constexpr Unit kTimes[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};
constexpr Unit kSizes[] = {{'K', 1 << 10}, {'M', 1 << 20}, {'G', kGibi}, {'T', kGibi << 10}};

template <std::size_t Count>
std::uint64_t ReadUnits(const std::string& option, const std::string& text,
                        const Unit (&units)[Count], std::uint64_t most) {
  for (const Unit& unit : units) {
    if (text.empty() || text.back() != unit.letter) continue;
    const std::uint64_t number = ReadNumber(option, text.substr(0, text.size() - 1));
    RefuseOutside(option, number, 1, most / unit.factor);
    return number * unit.factor;
  }
  std::string letters;
  for (const Unit& unit : units) letters.append(letters.empty() ? "" : ", ") += unit.letter;
  throw CLI::ValidationError(option,
                             "\"" + text + "\" is not a whole number and one of " + letters);
}

class Init final : public Verb {
 public:
  explicit Init(CLI::App& program)
      : Verb(program, "init", "Make the stream and the place of settings on an engine") {
    m_engine.AddTo(App());
    App()
        .add_option("--replicas", m_replicas, "How many servers keep each message [default: 3]")
        ->type_name("N")
        ->check(OneOf({"1", "3", "5"}));
    App()
        .add_option("--max-age", m_maxAge, "Keep messages for so long [default: 24h]")
        ->type_name("N[smhd]");
    App()
        .add_option("--max-bytes", m_maxBytes, "Keep so much of them in all [default: 10G]")
        ->type_name("N[KMGT]");
    App()
        .add_option("--max-of-app", m_maxOfApp,
                    "Keep so many messages of one application of one machine, so that a loud one "
                    "does not push out the others [default: 1000000]")
        ->type_name("N");
    App().add_flag("--change", m_change, "Change what exists with other settings");
    App().footer(
        "Nothing is ever deleted. What exists with other settings stays as it is unless\n"
        "--change is given, and the differences are printed.\n"
        "\n"
        "Exit status: 0 it stands as asked for, 1 it does not, 3 no server was reached.\n"
        "\n"
        "Examples:\n"
        "  quor-bridge init --engine 127.0.0.1 --replicas 1 --max-bytes 1G\n"
        "  quor-bridge init --engine n1.example.org --max-age 48h --change");
  }

  void Complete() override {
    m_engine.Complete();
    m_plan.name = m_engine.Stream();
    m_plan.subjects = {"quor1.>"};
    m_plan.replicas = m_replicas[0] - '0';
    constexpr std::uint64_t kLongest = 3650ull * 86400;
    m_plan.maxAge = std::chrono::seconds(ReadUnits("--max-age", m_maxAge, kTimes, kLongest));
    m_plan.maxBytes = ReadUnits("--max-bytes", m_maxBytes, kSizes, kGibi << 20);
    m_plan.maxOfSubject = ReadNumber("--max-of-app", m_maxOfApp);
    RefuseOutside("--max-of-app", m_plan.maxOfSubject, 1, kGibi);
  }

  int Run() override {
    std::string why;
    const auto setup = StreamSetup::Make(m_engine.Address("quor-bridge init"), &why);
    if (!setup) return Fail(why);
    const auto end = std::chrono::steady_clock::now() + kFirstPatience;
    while (!setup->WasReached() && std::chrono::steady_clock::now() < end)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (!setup->WasReached()) return Fail("no server can be reached", kExitNotReached);
    const Made stream = setup->MakeStream(m_plan, m_change, kPatience, &why);
    if (stream == Made::Failed) return Fail(why);
    const bool isGood = Tell("the stream " + m_plan.name, stream, why);
    const Made bucket =
        setup->MakeBucket(kSettingsBucket, m_plan.replicas, m_change, kPatience, &why);
    if (bucket == Made::Failed) return Fail(why);
    return Tell(std::string("the settings ") + kSettingsBucket, bucket, why) && isGood ? kExitGood
                                                                                       : kExitNo;
  }

 private:
  static bool Tell(const std::string& what, Made made, const std::string& why) {
    if (made == Made::Other)
      Fail(what + " stands with other settings: " + why + "\n--change changes them");
    else
      std::printf("%s %s\n", what.c_str(),
                  made == Made::New       ? "is made"
                  : made == Made::Changed ? "is changed"
                                          : "stands already");
    std::fflush(stdout);
    return made != Made::Other;
  }

  EngineOptions m_engine;
  StreamPlan m_plan;
  std::string m_replicas = "3", m_maxAge = "24h", m_maxBytes = "10G", m_maxOfApp = "1000000";
  bool m_change = false;
};

}  // namespace

std::unique_ptr<Verb> MakeInit(CLI::App& program) {
  return std::make_unique<Init>(program);
}
