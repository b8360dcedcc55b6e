// Any bytes as what a cluster holds about the settings of a machine, and as a question to the
// machine: what is read is within the bounds, is written, and reads back the same; else there is a
// reason. A question always gets an answer that fits into a message.
#include <cstdlib>

#include "base/fail_with.h"
#include "quor/cluster/settings_follower.h"
#include "quor/envelope/envelope.h"

namespace {

void Demand(bool holds) {
  if (!holds) std::abort();
}

class NoEngine final : public Engine {
 public:
  bool Publish(const std::string&, const std::string&, Bytes, std::uint64_t,
               std::string* why) override {
    return FailWith(why, "none");
  }
  std::unique_ptr<EngineReader> Read(const std::string&, EngineStart, std::string* why) override {
    return FailWith(why, "none", nullptr);
  }
  std::optional<EngineValue> Get(const std::string&, const std::string&, std::chrono::milliseconds,
                                 std::string* why) override {
    return FailWith(why, "none", std::nullopt);
  }
  Put PutValue(const std::string&, const std::string&, Bytes, std::uint64_t&,
               std::chrono::milliseconds, std::string* why) override {
    return FailWith(why, "none", Put::Failed);
  }
  struct NoReader final : EngineReader {
    State Next(std::chrono::milliseconds, std::vector<EngineMessage>&, std::string*) override {
      return State::Quiet;
    }
    void Wake() override {}
  };
  std::unique_ptr<EngineReader> Watch(const std::string&, const std::string&,
                                      std::string*) override {
    return std::make_unique<NoReader>();
  }
  std::optional<std::vector<std::uint8_t>> Ask(const std::string&, Bytes, std::chrono::milliseconds,
                                               std::string* why) override {
    return FailWith(why, "none", std::nullopt);
  }
  bool Serve(const std::string&, Answer, std::string*) override { return true; }
};

void ReadValue(Bytes bytes) {
  Wanted wanted, again;
  std::string why;
  std::vector<std::uint8_t> value;
  if (!ReadWanted(bytes, wanted, &why)) return Demand(!why.empty());
  Demand(wanted.settings.size() <= kWantedSettingsMax);
  // Without the fields that are not known here it is not larger.
  Demand(WriteWanted(wanted, value, &why) && ReadWanted(value, again, &why));
  Demand(again.settings == wanted.settings && again.who == wanted.who &&
         again.sink.has_value() == wanted.sink.has_value());
}

void ReadState(Bytes bytes) {
  WantedState state, again;
  std::string why;
  if (!ReadWantedState(bytes, state, &why)) return Demand(!why.empty());
  Demand(ReadWantedState(WriteWantedState(state), again, &why) && again == state);
}

void AnswerIt(Bytes bytes, bool mayChange) {
  NoEngine engine;
  SettingsFollower follower(
      engine, "web1",
      [](const quor::wire::Request& request, quor::wire::Response* response, std::string*) {
        response->mutable_app()->set_name(request.get_app().name());
        return true;
      },
      [](const std::string&) {});
  std::string why;
  Demand(follower.Start(&why));
  const std::vector<std::uint8_t> answer = follower.Answer(bytes, mayChange);
  quor::wire::Response response;
  Demand(answer.size() <= kEnvelopeBytes);
  Demand(response.ParseFromArray(answer.data(), static_cast<int>(answer.size())));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes bytes{data, size};
  ReadValue(bytes);
  ReadState(bytes);
  AnswerIt(bytes, false);
  AnswerIt(bytes, true);
  return 0;
}
