// A client that passes frames on and confirms them, in a process that may be killed. What it stores
// goes to a file, line by line, before it is confirmed.
#pragma once

#include <fcntl.h>

#include <fstream>
#include <map>
#include <sstream>

#include "quor/link/link_socket.h"
#include "quor/link/paths.h"
#include "quor/protocol/frames.h"
#include "quor/protocol/quor.pb.h"
#include "quord_process.h"
#include "records/raw_trace.h"

class TakingClient final : private DataSink {
 public:
  ~TakingClient() { Close(); }
  bool Connect(const std::string& path) {
    Close();
    m_socket = ConnectToService(path.c_str(), TrustedOwner(path));
    if (m_socket < 0) return false;
    quor::wire::Hello hello;
    hello.set_version(kProtocolVersion);
    hello.set_role(quor::wire::ROLE_MONITOR);
    Send(FrameType::Hello, hello);
    return true;
  }
  void Close() {
    if (m_socket >= 0) close(m_socket);
    m_socket = -1;
    m_reader = FrameReader();
    answered = ended = began = false;
    m_words.clear();
    m_texts.clear();
  }
  // The answer, when it has come; `begins` and `taken` as in the request.
  const quor::wire::Response& Take(const std::string& id, bool begins, std::uint64_t taken = 0) {
    quor::wire::Request request;
    request.mutable_take()->set_stream(id);
    request.mutable_take()->set_begins(begins);
    request.mutable_take()->set_taken(taken);
    return Ask(request);
  }
  const quor::wire::Response& Ask(quor::wire::Request request) {
    request.set_id(++m_id);
    answered = false;
    Send(FrameType::Request, request);
    WaitFor([&] { return Pump(), answered || ended; });
    return answer;
  }
  void SendTaken(std::uint64_t frames) {
    quor::wire::Taken taken;
    taken.set_frames(frames);
    Send(FrameType::Taken, taken);
  }
  void Pump() {
    std::uint8_t bytes[65536];
    while (m_socket >= 0 && !ended) {
      const LinkReceived got = ReceiveOnLink(m_socket, bytes, sizeof bytes);
      m_reader.Feed({bytes, got.bytes});
      while (const auto frame = m_reader.Next()) Take(*frame);
      ended = ended || got.ended || !m_reader.Error().empty();
      if (got.bytes == 0) break;
    }
  }
  // Lines for a file are appended to this descriptor, if there is one.
  int store = -1;
  bool answered = false, ended = false, began = false;
  std::uint64_t received = 0;  // the number of the last frame
  std::vector<std::string> lines;
  quor::wire::Response answer;
  quor::wire::Ledger first;

 private:
  template <class Message>
  void Send(FrameType type, const Message& message) {
    SendOnLink(m_socket, EncodeFrame(type, message.SerializeAsString()));
  }
  void Take(const Frame& frame) {
    quor::wire::Ledger ledger;
    std::string why;
    if (frame.type == FrameType::Response && ParseBody(frame, &answer)) {
      answered = true;
      if (answer.taken() > 0) received = answer.taken();
    } else if (frame.type == FrameType::Data) {
      EXPECT_TRUE(ReadDataBody(frame.body, *this, &why)) << why;
    } else if (frame.type == FrameType::Ledger && ParseBody(frame, &ledger)) {
      if (began) return TakeFrame(ledger);
      began = true;
      first = ledger;
      for (const auto& word : ledger.sources()) m_words[word.instance()] = word;
    }
  }
  // "number instance serial delivered lost text,text,..."
  void TakeFrame(const quor::wire::Ledger& ledger) {
    std::ostringstream line;
    line << ++received << ' ';
    for (const auto& word : ledger.sources()) {
      for (const char c : word.instance()) line << static_cast<int>(static_cast<unsigned char>(c));
      const auto& before = m_words[word.instance()];
      line << ' ' << word.serial() << ' ' << word.delivered() - before.delivered() << ' '
           << word.lost() - before.lost() << ' ' << m_texts;
      m_words[word.instance()] = word;
    }
    m_texts.clear();
    line << '\n';
    lines.push_back(line.str());
    if (store >= 0 && write(store, line.str().data(), line.str().size()) < 0) _exit(97);
  }
  void OnName(HubNameId, std::string_view) override {}
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    const RawHubTrace raw(record);
    if (raw.SequenceNumber() == kNoSequenceNumber) return;
    m_texts += std::string(raw.Text()) + ",";
  }

  int m_socket = -1;
  FrameReader m_reader;
  std::uint32_t m_id = 0;
  std::map<std::string, quor::wire::Ledger::Source> m_words;
  std::string m_texts;
};
