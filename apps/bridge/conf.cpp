// quor-bridge conf: the users of the engine's servers, by the certificates of "quord keys".
#include <cstdio>

#include "quor/cluster/wanted.h"
#include "quor/envelope/envelope.h"
#include "usage.h"
#include "verbs.h"

namespace {

using Words = std::vector<std::string>;

const std::string kValues = std::string("$KV.") + kSettingsBucket + ".";

// Names are used in subjects and in the text of a configuration.
bool IsStreamName(const std::string& name) {
  return !name.empty() && name.find_first_not_of(
                              "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrst"
                              "uvwxyz0123456789_-") == name.npos;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') quoted.push_back('\\');
    quoted.push_back(byte);
  }
  return quoted + "\"";
}

void PrintList(const char* what, const Words& subjects) {
  std::printf("        %s: [\n", what);
  for (const std::string& subject : subjects)
    std::printf("          %s\n", Quoted(subject).c_str());
  std::printf("        ]\n");
}

// A user who answers questions may also publish at the subjects where the askers wait.
void PrintUser(const std::string& name, const char* role, const Words& publish,
               const Words& answers = {}) {
  const std::string email = name + "@" + role + ".quor";
  std::printf("    {\n      user: %s\n      permissions: {\n", Quoted(email).c_str());
  PrintList("publish", publish);
  Words subscribe = {UserInbox(email) + ".>"};
  subscribe.insert(subscribe.end(), answers.begin(), answers.end());
  PrintList("subscribe", subscribe);
  if (!answers.empty()) std::printf("        allow_responses: { max: 1, expires: \"1m\" }\n");
  std::printf("      }\n    }\n");
}

// "alice", or "alice=orders,billing".
struct Watcher {
  std::string name;
  Words apps;  // none: all
};

Watcher ReadWatcher(const std::string& text) {
  Watcher watcher;
  const std::size_t at = text.find('=');
  watcher.name = text.substr(0, at);
  for (std::size_t begin = at; begin != text.npos;) {
    const std::size_t end = text.find(',', begin + 1);
    const std::size_t size = end == text.npos ? text.npos : end - begin - 1;
    watcher.apps.push_back(text.substr(begin + 1, size));
    begin = end;
  }
  return watcher;
}

class Conf final : public Verb {
 public:
  explicit Conf(CLI::App& program)
      : Verb(program, "conf", "Print the users of the engine's servers") {
    App()
        .add_option("--stream", m_stream, "The name of the stream [default: QUOR1]")
        ->type_name("NAME");
    AddNames("--forward", m_publishers, "A machine that publishes its traces; repeatable", "NAME");
    AddNames("--monitor", m_watchers, "Who may read, all or some applications; repeatable",
             "NAME[=APP,APP]");
    AddNames("--configure", m_owners,
             "Who may make the stream and change settings, too; repeatable", "NAME");
    App().footer(
        "NAME is that of the certificate, as in \"quord keys issue NAME --role forward\".\n"
        "A machine publishes below its own name only, so there NAME is the machine's.\n"
        "\n"
        "Examples:\n"
        "  quor-bridge conf --forward web1 --forward web2 --monitor alice\n"
        "  quor-bridge conf --forward web1 --monitor bob=orders --configure carol");
  }

  void Complete() override {
    if (!IsStreamName(m_stream))
      throw CLI::ValidationError("--stream", "\"" + m_stream + "\" cannot be the name of a stream");
    if (m_publishers.empty() && m_watchers.empty() && m_owners.empty())
      throw CLI::ValidationError("there is nobody to print: --forward, --monitor or --configure");
  }

  int Run() override {
    std::printf(
        "# For the configuration file of every server of the engine. Its block \"tls\" needs\n"
        "# \"verify_and_map: true\": a client is who its certificate says.\n"
        "authorization: {\n  users: [\n");
    for (const std::string& name : m_publishers) PrintPublisher(name);
    for (const std::string& text : m_watchers) PrintWatcher(ReadWatcher(text));
    for (const std::string& name : m_owners) {
      Words allowed = {Api("STREAM.CREATE."), Api("STREAM.UPDATE.")};
      for (const char* const what : {"CREATE.", "UPDATE.", "INFO.", "MSG.GET."})
        allowed.push_back(OfSettings(std::string("STREAM.") + what));
      // What is wanted, but not the word of the machines about it, which is a level deeper.
      allowed.push_back(kValues + "*.*");
      allowed.push_back("quor1-cfg.*");
      allowed.push_back("quor1-set.*");
      for (const std::string& subject : ForReading({})) allowed.push_back(subject);
      PrintUser(name, "configure", allowed);
    }
    std::printf("  ]\n}\n");
    return std::fflush(stdout) == 0 ? kExitGood : Fail("the output cannot be written");
  }

 private:
  void AddNames(const char* option, Words& names, const char* help, const char* type) {
    App().add_option(option, names, help)->type_name(type)->allow_extra_args(false);
  }

  // It follows what is wanted of it, tells what became of that, and answers what is asked about it.
  void PrintPublisher(const std::string& name) const {
    const std::string machine = SubjectToken(name);
    PrintUser(name, "forward",
              {"quor1." + machine + ".>", Api("STREAM.INFO."), OfSettings("STREAM.INFO."),
               OfSettings("STREAM.MSG.GET."),
               OfSettings("CONSUMER.CREATE.") + ".*." + kValues + machine + ".*",
               OfSettings("CONSUMER.MSG.NEXT.") + ".*", OfSettings("CONSUMER.DELETE.") + ".*",
               kValues + machine + ".*.state"},
              {"quor1-cfg." + machine, "quor1-set." + machine});
  }

  static std::string OfSettings(const std::string& what) {
    return "$JS.API." + what + "KV_" + kSettingsBucket;
  }
  std::string Api(const char* what) const { return std::string("$JS.API.") + what + m_stream; }

  // Reading makes consumers, whose names nobody can guess: so asking by a name is no door to the
  // consumers of others, as long as nobody may list them.
  Words ForReading(const Words& apps) const {
    Words allowed = {Api("STREAM.INFO.")};
    const std::string make = Api("CONSUMER.CREATE.") + ".*.quor1.";
    if (apps.empty()) allowed.push_back(make + ">");
    for (const std::string& app : apps) allowed.push_back(make + "*." + SubjectToken(app));
    if (!apps.empty()) allowed.push_back(make + "*._");
    allowed.push_back(Api("CONSUMER.MSG.NEXT.") + ".*");
    allowed.push_back(Api("CONSUMER.DELETE.") + ".*");
    return allowed;
  }

  void PrintWatcher(const Watcher& watcher) const {
    PrintUser(watcher.name, "monitor", ForReading(watcher.apps));
  }

  std::string m_stream = "QUOR1";
  Words m_publishers, m_watchers, m_owners;
};

}  // namespace

std::unique_ptr<Verb> MakeConf(CLI::App& program) {
  return std::make_unique<Conf>(program);
}
