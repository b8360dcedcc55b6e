// quor-bridge otlp-out: sends the traces of this machine to a collector of OpenTelemetry.
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "base/fail_with.h"
#include "otlp_out_run.h"
#include "quor/log/log.h"
#include "usual_state.h"
#include "verbs.h"

namespace {

constexpr std::uint16_t kCollectorPort = 4318, kHttpsPort = 443;

// Those of a request are made here, and nothing may end them early.
bool IsHeader(const std::string& line) {
  const std::size_t colon = line.find(':');
  if (colon == 0 || colon == line.npos) return false;
  std::string name = line.substr(0, colon);
  for (char& letter : name) letter = static_cast<char>(std::tolower(letter));
  if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789!#$%&'*+-.^_`|~") != name.npos)
    return false;
  for (const char* const ours : {"host", "connection", "content-length", "content-type",
                                 "content-encoding", "transfer-encoding", "expect", "upgrade"})
    if (name == ours) return false;
  for (const char byte : line)
    if (static_cast<unsigned char>(byte) < ' ' && byte != '\t') return false;
  return true;
}

// The reason never has a line of the file: it may be a secret.
bool ReadHeaders(const std::string& path, std::string* headers, std::string* why) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return FailOn(why, path);
  if ((status.st_mode & 077) != 0) return FailWith(why, path + ": others may read it (chmod 600)");
  std::ifstream file(path);
  if (!file) return FailOn(why, path);
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line.front() == '#') continue;
    if (!IsHeader(line))
      return FailWith(why, path + ": line " + std::to_string(number) +
                               " is no \"Name: value\" that may be added to a request");
    *headers += line + "\r\n";
  }
  return true;
}

class OtlpOut final : public Verb {
 public:
  explicit OtlpOut(CLI::App& program)
      : Verb(program, "otlp-out", "Send the traces of this machine to OpenTelemetry") {
    App().add_option("URL", m_url, "The collector, as http://127.0.0.1:4318")->required();
    AddFile("--header-file", m_headers, "Lines \"Name: value\" for each request, as a token");
    AddFile("--ca", m_plan.trust.ca, "The authorities (PEM) to trust instead of the system's");
    AddFile("--cert", m_plan.trust.certificate, "Our certificate (PEM), if the collector asks");
    AddFile("--key", m_plan.trust.key, "Its key (PEM)");
    AddFile("--state", m_plan.state,
            "What the collector has [default: otlp-out.state among\n"
            "the state of quord]");
    App()
        .add_option("--socket", m_socket, "The socket of the service [default: as for monitors]")
        ->type_name("PATH");
    App()
        .add_option("-l,--log-level", m_level, "error, warning, info, debug [default: info]")
        ->type_name("LEVEL");
    App().footer(
        "Runs until SIGTERM or SIGINT. Blocks become spans, all other traces logs.\n"
        "The service keeps its traces until the collector has them.\n"
        "\n"
        "Examples:\n"
        "  quor-bridge otlp-out http://127.0.0.1:4318\n"
        "  quor-bridge otlp-out https://collector.example.org --header-file token.txt");
  }

  void Complete() override {
    const std::optional<LogLevel> level = LogLevelOf(m_level);
    if (!level) throw CLI::ValidationError("--log-level", "\"" + m_level + "\" is no level");
    SetLogLevel(*level);
    SetLogName("quor-bridge");
    std::string why;
    const bool isHttps = m_url.starts_with("https://");
    const auto address = ReadWebAddress(m_url, isHttps ? kHttpsPort : kCollectorPort, &why);
    if (!address) throw CLI::ValidationError("URL", why);
    m_plan.collector = *address;
    const WebTrust& trust = m_plan.trust;
    if (!isHttps && !(trust.ca + trust.certificate + trust.key).empty())
      throw CLI::ValidationError("--ca, --cert and --key are for an address with https");
    if (trust.certificate.empty() != trust.key.empty())
      throw CLI::ValidationError("--cert and --key belong together");
    if (m_plan.state.empty()) m_plan.state = UsualState("otlp-out.state");
    if (m_plan.state.empty())
      throw CLI::RequiredError("--state is needed: there is no home",
                               CLI::ExitCodes::RequiredError);
  }

  int Run() override {
    std::string why;
    if (!m_headers.empty() && !ReadHeaders(m_headers, &m_plan.headers, &why)) return ::Fail(why);
    if (!m_socket.empty()) setenv("QUOR_SOCKET", m_socket.c_str(), 1);
    OtlpOutRun run(m_plan);
    bool isNotReached = false;
    if (!run.Start(&why, &isNotReached))
      return ::Fail(why, isNotReached ? kExitNotReached : kExitNo);
    run.Run();
    return kExitGood;
  }

 private:
  void AddFile(const char* option, std::string& path, const char* help) {
    App().add_option(option, path, help)->type_name("FILE");
  }

  std::string m_url, m_headers, m_socket, m_level = "info";
  OtlpOutPlan m_plan;
};

}  // namespace

std::unique_ptr<Verb> MakeOtlpOut(CLI::App& program) {
  return std::make_unique<OtlpOut>(program);
}
