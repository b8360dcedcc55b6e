// quor-bridge read: gives one monitor what a cluster stores. Monitors start it.
#include <sys/socket.h>
#include <unistd.h>

#include <asio/io_context.hpp>

#include "engine_keys.h"
#include "quor/engine/jetstream/jetstream.h"
#include "quor/protocol/byte_stream.h"
#include "quor/relay/monitor/relay_session.h"
#include "usage.h"
#include "verbs.h"

namespace {

class Read final : public Verb {
 public:
  explicit Read(CLI::App& program)
      : Verb(program, "read", "Give a monitor what a cluster stores; monitors start it") {
    App()
        .add_option("ADDRESS", m_text, "What to read: nats://HOST/STREAM, see trc(1)")
        ->required()
        ->type_name("");
    App().footer(
        "Its standard input is a socket to the monitor. Give the address to the monitor\n"
        "instead, which starts this command.\n"
        "\n"
        "Examples:\n"
        "  quor-bridge read nats://127.0.0.1/QUOR1");
  }

  void Complete() override {
    std::string why;
    const auto address = ParseRelayAddress(m_text, &why);
    if (!address) throw CLI::ValidationError(why);
    m_address = *address;
  }

  int Run() override {
    int type = 0;
    socklen_t size = sizeof type;
    if (getsockopt(STDIN_FILENO, SOL_SOCKET, SO_TYPE, &type, &size) != 0 || type != SOCK_STREAM)
      return Fail(
          "standard input is no socket: monitors start this command themselves, as in "
          "\"trc tail ADDRESS\"",
          kExitWrongUse);
    asio::io_context io(1);
    LocalSocket socket(io);
    std::error_code error;
    socket.assign(asio::local::stream_protocol(), dup(STDIN_FILENO), error);
    if (error) return Fail("standard input: " + error.message());
    RelaySession session(
        m_address,
        [this](EngineUser& user, std::string* why) -> std::unique_ptr<Engine> {
          const auto at = EngineAt(m_address, why);
          return at ? JetStream::Make(*at, m_address.stream, user, why) : nullptr;
        },
        [&io] { io.stop(); }, {});
    session.Start(MakeStream(std::move(socket)));
    io.run();
    return kExitGood;
  }

 private:
  std::string m_text;
  RelayAddress m_address;
};

}  // namespace

std::unique_ptr<Verb> MakeRead(CLI::App& program) {
  return std::make_unique<Read>(program);
}
