// Takers of a hub that the test feeds, over real sockets, with clients that are killed at any byte.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <asio/io_context.hpp>
#include <map>
#include <string>

#include "../hub/hub_fixture.h"
#include "quor/takers/takers.h"

// The service's end of one connection, as a session serves it.
class TakerSession final : public Connection::Handler {
 public:
  TakerSession(asio::io_context& io, Takers& takers, std::shared_ptr<TakerStream> stream,
               int socket)
      : m_takers(takers), m_stream(std::move(stream)) {
    m_connection = Connection::Start(
        MakeStream(LocalSocket(io, asio::local::stream_protocol(), socket)), *this);
    m_stream->Start(*m_connection, [this] { End("replaced"); });
  }
  ~TakerSession() {
    if (m_connection) End("the test is over");
  }
  const std::string& Ended() const { return m_ended; }  // why; empty: it stands

 private:
  void OnFrame(const Frame& frame) override {
    quor::wire::Taken taken;
    std::string why = "not Taken";
    if (frame.type != FrameType::Taken || !ParseBody(frame, &taken) ||
        !m_stream->Take(taken.frames(), &why))
      return End(why);
    m_takers.RenewNames();
  }
  void OnWritten() override { m_stream->Pump(); }
  void OnClosed(const std::string& reason) override { Leave(reason); }
  void End(const std::string& why) {
    m_connection->Close();
    Leave(why);
  }
  void Leave(const std::string& why) {
    m_takers.Leave(*m_stream, *m_connection);
    m_connection.reset();
    m_ended = why;
  }

  Takers& m_takers;
  const std::shared_ptr<TakerStream> m_stream;
  std::shared_ptr<Connection> m_connection;
  std::string m_ended;
};

// What one frame said of its source.
struct TakenFrame {
  std::string instance;
  std::uint64_t serial = 0, delivered = 0, lost = 0;
  std::vector<std::string> texts;  // "app serial" of traces, without reports
  bool operator==(const TakenFrame&) const = default;
};

// A client. What it stores of each frame survives its end, everything else is of one connection.
class TakerClient final : private DataSink {
 public:
  TakerClient(asio::io_context& io, Takers& takers, std::string id, std::string owner = "1000")
      : m_io(io), m_takers(takers), m_id(std::move(id)), m_owner(std::move(owner)) {}
  ~TakerClient() { Kill(); }

  // `taken`: as it says. ERROR_NONE when it has the stream.
  quor::wire::ErrorCode Connect(bool begins, std::uint64_t taken = 0) {
    quor::wire::Take take;
    take.set_stream(m_id);
    take.set_begins(begins);
    take.set_taken(taken);
    auto code = quor::wire::ERROR_NONE;
    const auto stream = m_takers.Open(m_owner, "the client", take, &code, &why);
    if (!stream) return code;
    Kill();
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    m_socket = ends[0];
    m_frame = received = stream->Taken();
    session = std::make_unique<TakerSession>(m_io, m_takers, stream, ends[1]);
    return code;
  }
  // Its process ends: what lies in the socket is gone.
  void Kill() {
    if (m_socket >= 0) close(m_socket);
    m_socket = -1;
    m_reader = FrameReader();
    m_names.clear();
    m_words.clear();
    m_data.reset();
    m_began = false;
  }
  // Reads at most so many bytes. False: there is nothing to be read.
  bool Read(std::size_t most = 1u << 20) {
    std::vector<std::uint8_t> bytes(most);
    const ssize_t got = recv(m_socket, bytes.data(), most, MSG_DONTWAIT);
    if (got <= 0) return false;
    m_reader.Feed(Bytes(bytes.data(), static_cast<std::size_t>(got)));
    while (const auto frame = m_reader.Next()) Take(*frame);
    EXPECT_EQ(m_reader.Error(), "");
    return true;
  }
  // Only the first `bytes` of the message leave it.
  void SendTaken(std::uint64_t frames, std::size_t bytes = ~std::size_t{0}) {
    quor::wire::Taken taken;
    taken.set_frames(frames);
    const auto message = EncodeFrame(FrameType::Taken, taken.SerializeAsString());
    send(m_socket, message.data(), std::min(bytes, message.size()), MSG_NOSIGNAL);
  }

  std::map<std::uint64_t, TakenFrame> stored;  // by number
  std::uint64_t received = 0;                  // number of the last frame of this connection
  std::uint64_t again = 0;                     // frames that had been stored before
  std::uint64_t forgotten = 0;                 // lines about forgotten sources
  std::uint64_t forgottenSum = 0;              // as of the first ledger
  std::string component;                       // of the last trace
  std::string why;
  std::unique_ptr<TakerSession> session;

 private:
  void Take(const Frame& frame) {
    quor::wire::Ledger ledger;
    if (frame.type == FrameType::Data) {
      EXPECT_TRUE(m_began && !m_data) << "a ledger stands between two data frames";
      m_data.emplace();
      EXPECT_TRUE(ReadDataBody(frame.body, *this, &why)) << why;
    } else if (frame.type == FrameType::Ledger) {
      ASSERT_TRUE(ParseBody(frame, &ledger));
      m_began ? TakeFrame(ledger) : TakeFirst(ledger);
    }
  }
  void TakeFirst(const quor::wire::Ledger& ledger) {
    m_began = true;
    EXPECT_TRUE(ledger.has_forgotten());
    forgottenSum = ledger.forgotten();
    for (const auto& word : ledger.sources()) {
      EXPECT_EQ(word.delivered() + word.lost(), 0u);
      m_words[word.instance()] = word;
    }
  }
  void TakeFrame(const quor::wire::Ledger& ledger) {
    ASSERT_LE(ledger.sources_size(), 1) << "of one source at the most";
    TakenFrame frame = m_data ? std::move(*m_data) : TakenFrame();
    m_data.reset();
    forgotten += static_cast<std::uint64_t>(ledger.forgotten_sources_size());
    if (ledger.sources_size() == 1) {
      const auto& word = ledger.sources(0);
      const auto before = m_words[word.instance()];
      frame.instance = word.instance();
      frame.serial = word.serial();
      frame.delivered = word.delivered() - before.delivered();
      frame.lost = word.lost() - before.lost();
      if (!before.instance().empty()) {
        EXPECT_EQ(word.serial() - frame.delivered - frame.lost, before.serial());
      }
      m_words[word.instance()] = word;
    }
    EXPECT_EQ(frame.texts.size(), frame.delivered) << "the ledger counts what came";
    received = ++m_frame;
    const auto [place, isNew] = stored.try_emplace(m_frame, frame);
    again += isNew ? 0 : 1;
    EXPECT_EQ(place->second, frame) << "frame " << m_frame << " is the same as before";
  }
  void OnName(HubNameId id, std::string_view utf8) override { m_names[id] = utf8; }
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    const RawHubTrace raw(record);
    for (const HubNameId id : raw.Ids().All())
      EXPECT_TRUE(m_names.contains(id)) << "the name stands before its first trace";
    if (raw.SequenceNumber() == kNoSequenceNumber) return;
    const std::string text(raw.Text());
    EXPECT_EQ(text.substr(0, text.find(' ')), m_names[raw.AppId()]);
    component = m_names[raw.ComponentId()];
    m_data->texts.push_back(text);
  }

  asio::io_context& m_io;
  Takers& m_takers;
  const std::string m_id, m_owner;
  int m_socket = -1;
  FrameReader m_reader;
  std::map<HubNameId, std::string> m_names;
  std::map<std::string, quor::wire::Ledger::Source> m_words;
  std::optional<TakenFrame> m_data;
  std::uint64_t m_frame = 0;
  bool m_began = false;
};
