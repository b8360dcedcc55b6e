// Over mutual TLS: who may come in, and traces handed on from one machine to another.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <quor/quor.hpp>

#include <filesystem>

#include "quor/client/trace_config.h"
#include "quor/client/trace_thread.h"
#include "quor/protocol/keys.h"
#include "quord_client.h"
#include "support/swept_segments.h"

namespace {

QUOR_POINT(connect_point, "Net", "Connect");

// A service with keys that listens on a free port of the loopback address.
class Remote : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(quord.Run({"keys", "init", "--host", "orders1"}), 0);
    ASSERT_EQ(Issue("monitor", "monitor"), 0);
    ASSERT_EQ(Issue("configure", "configure"), 0);
    quord.Start({"--listen", "127.0.0.1:0"});
    machine = "127.0.0.1:" + quord.Port();
  }
  int Issue(const std::string& name, const std::string& role) {
    return quord.Run({"keys", "issue", name, "--role", role, "--out", Keys(name)});
  }
  std::string Keys(const std::string& name) const { return quord.Folder().File(name); }
  bool MonitorsWith(const std::string& keys, std::string* why = nullptr) {
    setenv("QUOR_KEYS", keys.c_str(), 1);
    NameMap names;
    TraceThread_i* const connection =
        TraceThread_i::ConnectToTraceService(QuorStr::String_t(machine.c_str()), names, why);
    if (connection) connection->Disconnect();
    return connection != nullptr;
  }
  bool ConfiguresWith(const std::string& keys) {
    setenv("QUOR_KEYS", keys.c_str(), 1);
    const QuorPtr<trace_Config_i> config(trace_Config_i::Create(machine));
    return config.Get() != nullptr;
  }
  QuordProcess quord;
  std::string machine;
};

TEST_F(Remote, RolesOfTheCertificatesAreEnforced) {
  EXPECT_TRUE(MonitorsWith(Keys("monitor")));
  EXPECT_TRUE(MonitorsWith(Keys("configure")));
  EXPECT_TRUE(ConfiguresWith(Keys("configure")));
  EXPECT_FALSE(ConfiguresWith(Keys("monitor")));
  EXPECT_TRUE(quord.Says("the certificate does not allow to configure"));
}

TEST_F(Remote, MissingForeignExpiredAndWrongCertificatesAreRefused) {
  EXPECT_FALSE(MonitorsWith(Keys("nothing there")));
  QuordProcess foreign;
  ASSERT_EQ(foreign.Run({"keys", "init"}), 0);
  ASSERT_EQ(foreign.Run({"keys", "issue", "eve", "--role", "configure", "--out",
                         foreign.Folder().File("eve")}),
            0);
  EXPECT_FALSE(MonitorsWith(foreign.Folder().File("eve")));
  // Eve trusts this service's authority, but her certificate is of another one.
  std::filesystem::copy_file(Keys("monitor") + "/ca.crt", foreign.Folder().File("eve") + "/ca.crt",
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_FALSE(MonitorsWith(foreign.Folder().File("eve")));
  EXPECT_TRUE(quord.Says("is refused: the certificate is refused"));
  // The certificate of a server is not accepted from a client.
  const std::string turned = Keys("turned");
  std::filesystem::create_directory(turned);
  for (const auto& [from, to] :
       {std::pair{"ca.crt", "ca.crt"}, {"server.crt", "client.crt"}, {"server.key", "client.key"}})
    std::filesystem::copy_file(quord.KeysFolder() + "/" + from, turned + "/" + to);
  EXPECT_FALSE(MonitorsWith(turned));
  std::string why;
  ASSERT_TRUE(
      IssueKeys(quord.KeysFolder(), "late", quor::wire::ROLE_MONITOR, Keys("late"), &why, -1))
      << why;
  EXPECT_FALSE(MonitorsWith(Keys("late")));
  EXPECT_TRUE(quord.Says("certificate has expired"));
}

TEST_F(Remote, WhereNobodyListensTheMessageNamesHostPortAndRemedy) {
  ASSERT_EQ(quord.Stop(), 0);
  std::string why;
  EXPECT_FALSE(MonitorsWith(Keys("monitor"), &why));
  EXPECT_EQ(why, machine + ": Connection refused; start quord there with --listen");
}

TEST_F(Remote, PlainBytesAtTheTlsPortAreRefused) {
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(quord.Port())));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_GT(send(socket, "GET / HTTP/1.0\r\n\r\n", 18, MSG_NOSIGNAL), 0);
  EXPECT_TRUE(quord.Says("127.0.0.1 is refused: TLS: "));
  close(socket);
}

// Connections to the TLS port that never shake hands.
class Idlers {
 public:
  explicit Idlers(const std::string& port) {
    m_address.sin_family = AF_INET;
    m_address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
    m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~Idlers() {
    for (const int socket : m_sockets) close(socket);
  }
  // `begun`: with the first byte of a handshake.
  void Add(int count, bool begun) {
    for (int i = 0; i < count; ++i) {
      const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
      ASSERT_EQ(connect(socket, reinterpret_cast<sockaddr*>(&m_address), sizeof m_address), 0);
      if (begun) send(socket, "\x16", 1, MSG_NOSIGNAL);
      m_sockets.push_back(socket);
    }
  }

 private:
  sockaddr_in m_address{};
  std::vector<int> m_sockets;
};

TEST_F(Remote, ConnectionsWithoutAHandshakeKeepNobodyOut) {
  for (const bool begun : {false, true}) {
    Idlers idlers(quord.Port());
    idlers.Add(500, begun);
    for (int i = 0; i < 5; ++i) {
      EXPECT_TRUE(MonitorsWith(Keys("monitor"))) << begun << " " << i;
      idlers.Add(20, begun);
    }
  }
  EXPECT_TRUE(quord.Says("127.0.0.1: too many connections without a handshake"));
}

// A cable between two machines that can be cut: bytes go through until Cut. A process of its own,
// as the test forks others later and must have one thread then.
class Cable {
 public:
  explicit Cable(std::uint16_t to) : m_to(to) {
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(listen(m_listener, 8), 0);
    getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
    m_port = ntohs(address.sin_port);
    EXPECT_EQ(pipe2(m_orders, O_CLOEXEC), 0);
    m_process = fork();
    if (m_process == 0) Run();
  }
  ~Cable() {
    kill(m_process, SIGKILL);
    WaitForExit(m_process);
    for (const int end : {m_listener, m_orders[0], m_orders[1]}) close(end);
  }
  std::uint16_t Port() const { return m_port; }
  void Cut() { Order(kCut); }
  void Mend() { Order(kMend); }

 private:
  static constexpr char kCut = 'c', kMend = 'm';

  void Order(char order) { EXPECT_EQ(write(m_orders[1], &order, 1), 1); }
  [[noreturn]] void Run() {
    close(m_orders[1]);
    std::vector<std::pair<int, int>> ways;  // each direction of each connection
    for (;;) {
      std::vector<pollfd> polls{{m_orders[0], POLLIN, 0}, {m_listener, POLLIN, 0}};
      const std::size_t first = polls.size();
      for (const auto& [from, to] : ways) polls.push_back({from, POLLIN, 0});
      poll(polls.data(), polls.size(), -1);
      if (polls[0].revents != 0) {
        Obey(ways);
        continue;
      }
      if (polls[1].revents != 0) Accept(ways);
      for (std::size_t i = first; i < polls.size(); ++i)
        if (polls[i].revents != 0 && !Pass(ways[i - first])) {
          m_ended.insert(ways[i - first].first);
          m_ended.insert(ways[i - first].second);
        }
      std::erase_if(ways, [this](const auto& way) { return m_ended.contains(way.first); });
      for (const int socket : m_ended) close(socket);
      m_ended.clear();
    }
  }
  void Obey(std::vector<std::pair<int, int>>& ways) {
    char order = 0;
    if (read(m_orders[0], &order, 1) != 1) _exit(0);  // the test is gone
    m_cut = order == kCut;
    if (!m_cut) return;
    for (const auto& [from, to] : ways) close(from);
    ways.clear();
  }
  void Accept(std::vector<std::pair<int, int>>& ways) {
    const int one = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    const int other = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_to);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (m_cut || connect(other, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      close(one);
      close(other);
      return;
    }
    ways.emplace_back(one, other);
    ways.emplace_back(other, one);
  }
  static bool Pass(const std::pair<int, int>& way) {
    char bytes[65536];
    const ssize_t got = recv(way.first, bytes, sizeof bytes, MSG_DONTWAIT);
    if (got <= 0) return got < 0 && errno == EAGAIN;
    for (ssize_t sent = 0; sent < got;) {
      const ssize_t now =
          send(way.second, bytes + sent, static_cast<std::size_t>(got - sent), MSG_NOSIGNAL);
      if (now <= 0) return false;
      sent += now;
    }
    return true;
  }

  const std::uint16_t m_to;
  std::uint16_t m_port = 0;
  int m_listener = -1;
  std::set<int> m_ended;
  bool m_cut = false;
  int m_orders[2] = {-1, -1};
  pid_t m_process = 0;
};

// Two services on this host with a cable between them.
class Forwarding : public Remote {
 protected:
  void SetUp() override {
    Remote::SetUp();
    cable = std::make_unique<Cable>(static_cast<std::uint16_t>(std::stoi(quord.Port())));
    near = std::make_unique<QuordProcess>();
    ASSERT_EQ(quord.Run({"keys", "issue", "near", "--role", "forward", "--out",
                         near->KeysFolder() + "/forward"}),
              0);
    near->Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
    ASSERT_TRUE(client.Connect(near->SocketPath()));
    ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
    ASSERT_EQ(client.Ask(OpenAppRequest("orders")).error(), quor::wire::ERROR_NONE);
    ASSERT_EQ(
        client.Ask(SinkRequest("orders", 1, "127.0.0.1:" + std::to_string(cable->Port()))).error(),
        quor::wire::ERROR_NONE);
  }
  std::unique_ptr<Cable> cable;
  std::unique_ptr<QuordProcess> near;
  QuordClient monitor, client;
};

int TraceInSteps(TracedChild& self) {
  quor_application("orders");
  for (int step = 0;; ++step) {
    for (int i = 0; i < 1000; ++i) QUOR_TRACE_INFO(connect_point, "{} {}", step, i);
    quor_flush(10000);
    self.Report(static_cast<std::uint64_t>(step));
    self.AwaitGo();
  }
  return 0;
}

TEST_F(Forwarding, TracesReachTheOtherMachineAndALinkCutAndMendedLosesNothing) {
  QuordClient here;
  ASSERT_TRUE(here.Monitor(near->SocketPath()));
  TracedChild app(TraceInSteps);
  ASSERT_EQ(app.Reported(), 0u);
  ASSERT_TRUE(monitor.Sees("0 999"));
  cable->Cut();
  for (std::uint64_t step = 1; step <= 3; ++step) {
    app.Go();
    ASSERT_EQ(app.Reported(), step);
  }
  ASSERT_TRUE(near->Says("cannot forward to"));
  EXPECT_EQ(monitor.delivered, 1000u);
  cable->Mend();
  ASSERT_TRUE(monitor.Sees("3 999"));
  EXPECT_EQ(monitor.delivered, 4000u);
  EXPECT_EQ(monitor.lost, 0u);
  for (std::size_t i = 0; i < 4000; ++i)
    ASSERT_EQ(monitor.traces[i].text, std::to_string(i / 1000) + " " + std::to_string(i % 1000));
  here.Pump();
  EXPECT_EQ(here.delivered, 0u);  // they are the other machine's
}

TEST_F(Forwarding, TheOtherServiceKilledAndRestartedIsBridged) {
  TracedChild app(TraceInSteps);
  ASSERT_EQ(app.Reported(), 0u);
  ASSERT_TRUE(monitor.Sees("0 999"));
  const std::string port = quord.Port();
  quord.Kill();
  app.Go();
  ASSERT_EQ(app.Reported(), 1u);
  quord.Start({"--listen", "127.0.0.1:" + port});
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  app.Go();
  ASSERT_EQ(app.Reported(), 2u);
  ASSERT_TRUE(monitor.Sees("2 999"));
  // What came while this monitor was away is the gap; nothing else is missing.
  EXPECT_EQ(monitor.delivered + monitor.lost + monitor.gaps, 3000u);
}

TEST_F(Forwarding, NamesThatAreUsedUpAreBegunAnewWhenNothingIsUnderWay) {
  // More threads than there are names, as of processes that come and go for days.
  const auto traceAs = [](const std::string& prefix, int threads) {
    return [prefix, threads](TracedChild&) {
      quor_application("orders");
      for (int i = 0; i < threads; ++i) {
        quor_thread_name((prefix + std::to_string(i)).c_str());
        QUOR_TRACE_INFO(connect_point, "{}{}", prefix, i);
        if (i % 500 == 499) quor_flush(10000);
      }
      return quor_flush(10000) == 1 ? 0 : 1;
    };
  };
  constexpr int kThreads = 40000;
  monitor.keepTraces = false;
  std::uint64_t traced = 0;
  for (const char* const prefix : {"a", "b"}) {
    TracedChild app(traceAs(prefix, kThreads));
    traced += kThreads;
    ASSERT_TRUE(
        WaitFor([&] { return monitor.Pump(), monitor.delivered + monitor.lost == traced; }, 60000));
    EXPECT_EQ(app.Wait(), 0);
  }
  const auto streams = [&] {
    const std::string log = near->Log();
    int count = 0;
    for (std::size_t at = 0; (at = log.find("forwarding to ", at)) != log.npos; ++at) ++count;
    return count;
  };
  ASSERT_TRUE(WaitFor([&] { return streams() == 2; })) << near->Log();
  // The other side has used up its names too. When its monitor has gone it begins anew.
  monitor.Close();
  QuordClient later;
  ASSERT_TRUE(later.Monitor(quord.SocketPath()));
  TracedChild app(traceAs("c", 10));
  ASSERT_TRUE(later.Sees("c9"));
  EXPECT_EQ(app.Wait(), 0);
  for (const SeenTrace& trace : later.traces) EXPECT_EQ(trace.component, "Net");
  EXPECT_EQ(later.delivered, 10u);
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(Forwarding, TheForwardingServiceKilledIsACountedGapAtTheOther) {
  TracedChild app(TraceInSteps);
  ASSERT_EQ(app.Reported(), 0u);
  ASSERT_TRUE(monitor.Sees("0 999"));
  cable->Cut();
  app.Go();
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(near->Says("cannot forward to"));
  near->Kill();
  cable->Mend();
  near->Start();
  app.Go();
  ASSERT_EQ(app.Reported(), 2u);
  ASSERT_TRUE(monitor.Sees("2 999"));
  EXPECT_EQ(monitor.delivered + monitor.lost, 3000u);
  EXPECT_LE(monitor.lost, 1000u);
}

// Traces that a service held for another machine when it ended: of an application that runs and
// traces no more, of one that the other machine does not know, and over two such ends.
class Held : public Forwarding {
 protected:
  static int TraceAndEnd(TracedChild&) {
    quor_application("orders");
    for (int i = 0; i < 70; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    return 0;
  }
  bool Gets(std::uint64_t traced) {
    return WaitFor([&] { return monitor.Beat(), monitor.Pump(), monitor.Sum() >= traced; });
  }
  void CutAndEndTwice(const std::function<void()>& end) {
    TracedChild app(TraceInSteps);
    ASSERT_EQ(app.Reported(), 0u);
    ASSERT_TRUE(monitor.Sees("0 999"));
    cable->Cut();
    app.Go();
    ASSERT_EQ(app.Reported(), 1u);
    TracedChild unheardOf(TraceAndEnd);
    EXPECT_EQ(unheardOf.Wait(), 0);
    ASSERT_TRUE(near->Says("has ended"));
    ASSERT_TRUE(near->Says("cannot forward to"));
    SegmentFolder segments;
    ASSERT_TRUE(segments.Open(near->SocketPath()));
    // Traces that a killed service has not taken are left to the next one, and not lost.
    ASSERT_TRUE(WaitFor([&] { return monitor.Beat(), SegmentsNotTaken(segments) == 1; }));
    for (int i = 0; i < 2; ++i) {
      end();
      monitor.Beat();
      near->Start();
      monitor.Beat();
    }
    cable->Mend();
    ASSERT_TRUE(Gets(2070)) << monitor.Sum() << near->Log();
    EXPECT_EQ(monitor.delivered, 1000u);
    EXPECT_EQ(monitor.lost, 1070u);
    std::uint64_t reported = 0;
    for (const std::string& words : monitor.losses) {
      reported += std::stoull(words);
      EXPECT_NE(words.find("ended before it could hand them on"), words.npos) << words;
    }
    EXPECT_EQ(reported, 1070u);
    // The other application continues with the next service, and nothing is reported twice.
    app.Go();
    ASSERT_EQ(app.Reported(), 2u);
    ASSERT_TRUE(monitor.Sees("2 999"));
    EXPECT_EQ(monitor.Sum(), 3070u);
    end();
    near->Start();
    app.Go();
    ASSERT_EQ(app.Reported(), 3u);
    ASSERT_TRUE(monitor.Sees("3 999"));
    EXPECT_EQ(monitor.Sum(), 4070u);
  }
};

TEST_F(Held, IsCountedThereAfterAKill) {
  CutAndEndTwice([this] { near->Kill(); });
}

TEST_F(Held, IsCountedThereAfterACleanStopThatSaysSo) {
  CutAndEndTwice([this] { EXPECT_EQ(near->Stop(), 0); });
  EXPECT_TRUE(near->Says("ending with 1070 traces that 127.0.0.1:"));
}

TEST_F(Held, IsCountedThereWhenTheOtherServiceDiedToo) {
  const std::string port = quord.Port();
  quord.Kill();
  TracedChild app(TraceAndEnd);
  EXPECT_EQ(app.Wait(), 0);
  ASSERT_TRUE(near->Says("has ended"));
  near->Kill();
  near->Start();
  quord.Start({"--listen", "127.0.0.1:" + port});
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_TRUE(Gets(70)) << monitor.Sum() << near->Log();
  EXPECT_EQ(monitor.Sum(), 70u);
  EXPECT_EQ(monitor.delivered, 0u);
}

TEST_F(Held, IsCountedThereHoweverLongAgoTheApplicationEnded) {
  cable->Cut();
  TracedChild app(TraceAndEnd);
  EXPECT_EQ(app.Wait(), 0);
  ASSERT_TRUE(near->Says("has ended"));
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(12500);
  EXPECT_TRUE(WaitFor([&] {
    monitor.Beat();
    monitor.Pump();
    return std::chrono::steady_clock::now() > until;
  }));
  near->Kill();
  near->Start();
  cable->Mend();
  EXPECT_TRUE(Gets(70)) << monitor.Sum() << near->Log();
  EXPECT_EQ(monitor.lost, 70u);
}

}  // namespace
