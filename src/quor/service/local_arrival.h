// A new connection on the unix socket: finds out whether it is an application's runtime or a
// client, and reads the hello of a runtime.
//
// Shape    One socket serves both, so that there is one path and one unit to activate. Both begin
//          with a length and type 1. The sixth byte is the first byte of the link's version, which
//          is 0, or the tag of a protobuf field, which is never 0.
// Owner    Keeps itself alive until it has called back once, or given up.
// Errors   A peer that sends no valid hello within the deadline is disconnected, with a reason in
//          the log.
// Threads  The service's one thread.
#pragma once

#include <asio/steady_timer.hpp>
#include <functional>

#include "quor/listeners/local_listener.h"
#include "quor/protocol/byte_stream.h"
#include "quor/traced/running_app.h"

class LocalArrival final : public std::enable_shared_from_this<LocalArrival> {
 public:
  class Host {
   public:
    virtual void OnClient(LocalSocket socket, const LocalPeer& peer) = 0;
    // False and a reason: refuse it.
    virtual bool OnApplication(AppArrival arrival, std::string* why) = 0;
    virtual void OnGone(LocalArrival& arrival) = 0;  // in any case, last

   protected:
    ~Host() = default;
  };

  // `socket` is connected and non-blocking.
  LocalArrival(asio::io_context& io, Host& host, int socket, const LocalPeer& peer);
  ~LocalArrival();
  void Start(std::chrono::milliseconds deadline);
  void Stop();
  uid_t Uid() const { return m_peer.uid; }
  // Refuses the peer, because other peers wait and it has sent nothing yet.
  void SendAway() { Refuse("it has sent no hello"); }

 private:
  enum class Kind { Unknown, Application, Client, Gone };
  Kind Look();
  void Await();
  void OnReadable();
  void ReadHello();
  void TakeSegment(const std::vector<int>& descriptors);
  bool TakeHello(const LinkFrame& frame, Bytes rest, std::string* why);
  void Refuse(const std::string& why);
  void Finish();

  asio::io_context& m_io;
  Host* m_host;
  LocalPeer m_peer;
  OwnedDescriptor m_socket;
  asio::steady_timer m_deadline, m_again;
  LinkDecoder m_decoder;
  int m_segment = -1;
  int m_descriptors = 0;  // received
  bool m_isApplication = false, m_endsPeer = true;
};
