// A trace service for a forwarder in the test's own thread: what comes is in its hub, and it
// confirms when the test wants it.
#pragma once

#include <sys/socket.h>

#include <asio/io_context.hpp>
#include <string>
#include <vector>

#include "quor/forwarding/forward_inlet.h"
#include "quor/forwarding/forwarder.h"
#include "quor/hub/batch_records.h"

class PlayedService final : private Connection::Handler, private HubStream {
 public:
  explicit PlayedService(asio::io_context& io) : m_io(io) { m_hub->Add(*this); }
  ~PlayedService() { Break(); }

  // The way of a forwarder to it.
  ForwardWay Way() {
    return {"the played service", "it is too slow", [this](Connected done) {
              if (isAway) return asio::post(m_io, [done] { done(nullptr, "it is away"); });
              asio::post(m_io, [this, done] { done(Accept(), {}); });
            }};
  }
  void Break() {
    if (m_connection) m_connection->Close();
    m_connection.reset();
  }
  // It knows nothing of before, as one that was started anew.
  void ForgetAll() {
    Break();
    m_stream.reset();
    m_inlet = std::make_unique<ForwardInlet>(*m_hub);
  }
  void Confirm() {
    holds = false;
    if (m_connection && m_stream) SendTaken();
  }

  bool isAway = false, holds = false;
  std::string refuses;             // why nobody may forward
  std::vector<std::string> texts;  // of all traces, "application/process: text"
  unsigned streams = 0;
  std::string trouble;

 private:
  std::shared_ptr<ByteStream> Accept() {
    int pair[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) return nullptr;
    const auto wrap = [this](int end) {
      LocalSocket socket(m_io);
      socket.assign(asio::local::stream_protocol(), end);
      return MakeStream(std::move(socket));
    };
    m_connection = Connection::Start(wrap(pair[0]), *this);
    return wrap(pair[1]);
  }
  void OnFrame(const Frame& frame) override {
    quor::wire::Request request;
    quor::wire::Ledger ledger;
    bool good = true;
    if (frame.type == FrameType::Hello)
      m_connection->Send(FrameType::Welcome, quor::wire::Welcome());
    else if (frame.type == FrameType::Request && ParseBody(frame, &request))
      Open(request);
    else if (frame.type == FrameType::Data)
      good = m_stream->TakeData(frame.body, &trouble);
    else if (frame.type == FrameType::Ledger && ParseBody(frame, &ledger))
      good = m_stream->TakeLedger(ledger, &trouble);
    m_hub->Seal();
    m_hub->Deliver();
    if (frame.type == FrameType::Ledger && !holds) SendTaken();
    if (!good) Break();
  }
  void Open(const quor::wire::Request& request) {
    const auto& forward = request.forward();
    quor::wire::Response response;
    response.set_id(request.id());
    if (!refuses.empty()) {
      response.set_error(quor::wire::ERROR_ACCESS);
      response.set_text(refuses);
      m_connection->Send(FrameType::Response, response);
      return;
    }
    m_stream = m_inlet->Open("test", forward.stream(), forward.machine(), &trouble);
    ++streams;
    m_hub->Remove(*this);  // its names begin anew as well
    m_hub->Add(*this);
    response.set_taken(m_stream->Taken());
    m_connection->Send(FrameType::Response, response);
  }
  void SendTaken() {
    quor::wire::Taken taken;
    taken.set_frames(m_stream->Taken());
    m_connection->Send(FrameType::Taken, taken);
  }
  void OnClosed(const std::string&) override { m_connection.reset(); }
  void OnBatch(const SharedBatch& batch) override {
    ForEachRecord(*batch, [this](Bytes record) {
      const RawHubTrace raw(record.data());
      const auto name = [this](HubNameId id) { return std::string(m_hub->Names().Text(id)); };
      texts.push_back(name(raw.AppId()) + "/" + name(raw.PidId()) + ": " + std::string(raw.Text()));
    });
  }

  asio::io_context& m_io;
  std::unique_ptr<Hub> m_hub = std::make_unique<Hub>();
  std::unique_ptr<ForwardInlet> m_inlet = std::make_unique<ForwardInlet>(*m_hub);
  std::shared_ptr<ForwardInlet::Stream> m_stream;
  std::shared_ptr<Connection> m_connection;
};
