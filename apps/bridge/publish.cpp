// quor-bridge publish: the traces of this machine's service, to an engine.
#include <cstdlib>

#include "engine_options.h"
#include "quor/engine/jetstream/jetstream.h"
#include "quor/log/log.h"
#include "quor/protocol/machine.h"
#include "quor/publishing/publishing.h"
#include "usage.h"
#include "usual_state.h"
#include "verbs.h"

namespace {

class Publish final : public Verb {
 public:
  explicit Publish(CLI::App& program)
      : Verb(program, "publish", "Publish this machine's traces on an engine") {
    m_engine.AddTo(App());
    App()
        .add_option("--socket", m_socket, "The socket of the trace service [default: the usual]")
        ->type_name("PATH");
    App()
        .add_option("--state", m_options.stateFile,
                    "Where it keeps how far it is; two processes need two files")
        ->type_name("FILE");
    App()
        .add_option("-l,--log-level", m_level, "error, warning, info, debug [default: info]")
        ->type_name("LEVEL");
    App().footer(
        "Runs until SIGTERM or SIGINT. What the engine has not stored stays with the\n"
        "trace service; it and the engine may be away or come later. SIGUSR1 logs counts.\n"
        "It also brings the settings that are stored in the cluster to this machine.\n"
        "\n"
        "Examples:\n"
        "  quor-bridge publish --engine 127.0.0.1\n"
        "  quor-bridge publish --engine n1.example.org,n2.example.org --stream QUOR1");
  }

  void Complete() override {
    m_engine.Complete();
    const std::optional<LogLevel> level = LogLevelOf(m_level);
    if (!level) throw CLI::ValidationError("--log-level", "\"" + m_level + "\" is no level");
    SetLogLevel(*level);
    SetLogName("quor-bridge");
    m_options.stream = m_engine.Stream();
    m_options.machine = LocalHostName();
    if (m_options.stateFile.empty())
      m_options.stateFile = UsualState("publish-" + m_options.stream);
    if (m_options.stateFile.empty())
      throw CLI::ValidationError("--state", "is needed, because there is no HOME");
  }

  int Run() override {
    if (!m_socket.empty()) setenv("QUOR_SOCKET", m_socket.c_str(), 1);
    const NatsAddress address = m_engine.Address("quor-bridge publish " + m_options.machine);
    Publishing publishing(m_options, [&](EngineUser& user, std::string* why) {
      return JetStream::Make(address, m_options.stream, user, why);
    });
    std::string why;
    if (!publishing.Open(&why)) return Fail(why);
    publishing.Run();
    return kExitGood;
  }

 private:
  EngineOptions m_engine;
  PublishingOptions m_options;
  std::string m_socket, m_level = "info";
};

}  // namespace

std::unique_ptr<Verb> MakePublish(CLI::App& program) {
  return std::make_unique<Publish>(program);
}
