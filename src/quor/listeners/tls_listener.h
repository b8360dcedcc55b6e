// The listeners for other machines: accepts clients by mutual TLS.
//
// Shape    A new connection has a slot until its handshake is done or its time is over: only a
//          socket until its first byte, and TLS from then on. Slots are bounded, per address and in
//          total. At the bound a new connection takes the slot of an older one: of its own address
//          or, if all are taken, of the address that has the most; a connection that has sent
//          nothing first. So peers that never shake hands cannot keep out a peer that does.
// Owner    No operation keeps it alive: call Close before its end.
// Errors   Open returns false and a reason. After that a failure concerns one peer, and is logged.
// Threads  The service's one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quor/protocol/byte_stream.h"
#include "quor/protocol/tls.h"

// Parses "address:port" or "[address]:port"; port 0 lets the system choose one. None for other
// texts.
std::optional<asio::ip::tcp::endpoint> EndpointOf(const std::string& text);

class TlsListener {
 public:
  // A peer from `address` has been accepted.
  using Accepted = std::function<void(std::unique_ptr<TlsSocket> socket, const TlsPeer& peer,
                                      const std::string& address)>;
  static constexpr std::size_t kSlotsMax = 256, kSlotsPerAddress = 64;

  TlsListener(asio::io_context& io, std::chrono::milliseconds patience, Accepted accepted);
  ~TlsListener() { Close(); }
  TlsListener(const TlsListener&) = delete;
  TlsListener& operator=(const TlsListener&) = delete;

  bool Open(const std::vector<std::string>& listen, const TlsRules& rules, std::string* why);
  // For the connections from now on.
  using Tls = std::shared_ptr<asio::ssl::context>;
  void Use(Tls tls, const TlsRules& rules);
  // Null when it listens nowhere.
  SSL_CTX* Context() const { return m_tls ? m_tls->native_handle() : nullptr; }
  const TlsRules& Rules() const { return m_rules; }
  std::vector<std::string> Addresses() const;
  void Start();
  void Close();

 private:
  struct Listener {
    explicit Listener(asio::ip::tcp::acceptor from)
        : acceptor(std::move(from)), again(acceptor.get_executor()) {}
    asio::ip::tcp::acceptor acceptor;
    asio::steady_timer again;  // one each: a new wait would end the previous one
  };
  struct Slot;
  using Slots = std::list<std::shared_ptr<Slot>>;  // oldest first

  bool Listen(const std::string& text, std::string* why);
  void Accept(Listener& listener);
  void AcceptLater(Listener& listener);
  void Admit(asio::ip::tcp::socket socket);
  void MakeRoom(const std::string& newcomer);
  void DropOldest(const std::string& address);
  void ShakeHands(const std::shared_ptr<Slot>& slot);
  void OnShaken(const std::shared_ptr<Slot>& slot, const std::error_code& failed);
  void Leave(Slots::iterator slot);
  void AwaitOldest();
  void ReportDropped(const std::string& address);

  asio::io_context& m_io;
  const std::chrono::milliseconds m_patience;
  const Accepted m_accepted;
  std::list<Listener> m_listeners;
  Tls m_tls;
  TlsRules m_rules;
  Slots m_slots;
  std::map<std::string, std::size_t> m_perAddress;
  asio::steady_timer m_deadline;
  std::size_t m_dropped = 0;  // and not yet logged
  std::chrono::steady_clock::time_point m_nextReport{};
  bool m_closed = false;
};
