#include "quor/otlp/receive/loopback_listener.h"

#include "base/fail_with.h"
#include "quor/listeners/tls_listener.h"
#include "quor/protocol/machine.h"

namespace {

constexpr std::chrono::milliseconds kAcceptAgain{100};  // no descriptors left: later, perhaps

}  // namespace

bool LoopbackListener::Open(const std::string& text, std::string* why) {
  const auto endpoint = EndpointOf(text);
  if (!endpoint) return FailWith(why, "\"" + text + "\" is not ADDRESS:PORT");
  if (!endpoint->address().is_loopback())
    return FailWith(why, text + ": without TLS only addresses of this machine's loopback listen");
  std::error_code error;
  asio::ip::tcp::acceptor acceptor(m_io);
  acceptor.open(endpoint->protocol(), error);
  if (!error) acceptor.set_option(asio::socket_base::reuse_address(true), error);
  if (!error) acceptor.bind(*endpoint, error);
  if (!error) acceptor.listen(asio::socket_base::max_listen_connections, error);
  if (error) return FailWith(why, text + ": " + error.message());
  m_doors.emplace_back(std::move(acceptor));
  return true;
}

std::vector<std::string> LoopbackListener::Addresses() const {
  std::vector<std::string> addresses;
  for (const Door& door : m_doors) {
    std::error_code error;
    const auto endpoint = door.acceptor.local_endpoint(error);
    if (!error) addresses.push_back(AddressOf(endpoint.address().to_string(), endpoint.port()));
  }
  return addresses;
}

void LoopbackListener::Start() {
  for (Door& door : m_doors) Accept(door);
}

void LoopbackListener::Close() {
  m_closed = true;
  std::error_code ignored;
  for (Door& door : m_doors) {
    door.acceptor.close(ignored);
    door.again.cancel();
  }
}

void LoopbackListener::Accept(Door& door) {
  door.acceptor.async_accept(
      [this, &door](const std::error_code& error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted || m_closed) return;
        if (error) {
          door.again.expires_after(kAcceptAgain);
          return door.again.async_wait([this, &door](const std::error_code& ended) {
            if (!ended && !m_closed) Accept(door);
          });
        }
        std::error_code failed;
        const auto from = socket.remote_endpoint(failed);
        if (!failed) socket.set_option(asio::ip::tcp::no_delay(true), failed);
        if (!failed) m_accepted(std::move(socket), from.address().to_string());
        Accept(door);
      });
}
