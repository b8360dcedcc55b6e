// The doors for other machines: who comes in by mutual TLS.
//
// Shape    Whoever has connected has a slot until hands are shaken or its time is over: a socket
//          alone while it says nothing, and TLS from its first byte on. Slots are bounded, per
//          address and in all. At the bound the newcomer gets the slot of one that is older: of its
//          own address or, when all are taken, of the address that has the most; first of one that
//          has said nothing. So whoever comes to shake hands is not kept out by those who do not.
// Owner    Keeps itself alive in no operation: Close comes before its end.
// Errors   Open gives false and a reason; after that a failure is one peer's own, told in the log.
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

// Of "address:port" or "[address]:port"; port 0 lets the system choose one. Nothing for other
// texts.
std::optional<asio::ip::tcp::endpoint> EndpointOf(const std::string& text);

class TlsDoor {
 public:
  // Somebody has come in from `address`.
  using Come = std::function<void(std::unique_ptr<TlsSocket> socket, const TlsPeer& peer,
                                  const std::string& address)>;
  static constexpr std::size_t kSlotsMax = 256, kSlotsPerAddress = 64;

  TlsDoor(asio::io_context& io, std::chrono::milliseconds patience, Come come);
  ~TlsDoor() { Close(); }
  TlsDoor(const TlsDoor&) = delete;
  TlsDoor& operator=(const TlsDoor&) = delete;

  bool Open(const std::vector<std::string>& listen, const std::string& keysFolder,
            std::string* why);
  void Start();
  void Close();

 private:
  struct Listener {
    explicit Listener(asio::ip::tcp::acceptor from)
        : acceptor(std::move(from)), again(acceptor.get_executor()) {}
    asio::ip::tcp::acceptor acceptor;
    asio::steady_timer again;  // its own: a new wait ends the one before
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
  void TellDropped(const std::string& address);

  asio::io_context& m_io;
  const std::chrono::milliseconds m_patience;
  const Come m_come;
  std::list<Listener> m_listeners;
  std::shared_ptr<asio::ssl::context> m_tls;
  Slots m_slots;
  std::map<std::string, std::size_t> m_perAddress;
  asio::steady_timer m_deadline;
  std::size_t m_dropped = 0;  // and not yet told
  std::chrono::steady_clock::time_point m_nextWord{};
  bool m_closed = false;
};
