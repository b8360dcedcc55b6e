#include "quor/listeners/tls_listener.h"

#include <algorithm>
#include <charconv>

#include "base/fail_with.h"
#include "quor/log/log.h"
#include "quor/protocol/machine.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kTlsAcceptAgain{100};  // no descriptors left: later, perhaps
constexpr std::chrono::seconds kReportEvery{5};

// Addresses that may be the same host: an IPv6 host has a whole network of addresses.
std::string NeighbourhoodOf(const asio::ip::address& address) {
  if (!address.is_v6()) return address.to_string();
  const asio::ip::address_v6 six = address.to_v6();
  if (six.is_v4_mapped()) return asio::ip::make_address_v4(asio::ip::v4_mapped, six).to_string();
  auto bytes = six.to_bytes();
  std::fill(bytes.begin() + 8, bytes.end(), std::uint8_t{0});
  return asio::ip::address_v6(bytes).to_string();
}

}  // namespace

std::optional<asio::ip::tcp::endpoint> EndpointOf(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == text.npos) return std::nullopt;
  std::string address = text.substr(0, colon);
  if (address.size() > 2 && address.front() == '[' && address.back() == ']')
    address = address.substr(1, address.size() - 2);
  std::uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, wrong] = std::from_chars(text.data() + colon + 1, end, port);
  std::error_code error;
  const auto parsed = asio::ip::make_address(address, error);
  if (error || wrong != std::errc() || stop != end) return std::nullopt;
  return asio::ip::tcp::endpoint(parsed, port);
}

struct TlsListener::Slot {
  explicit Slot(asio::ip::tcp::socket from) : socket(std::move(from)) {}
  void Close() {
    std::error_code ignored;
    (tls ? tls->lowest_layer() : socket).close(ignored);
  }
  asio::ip::tcp::socket socket;    // until it is in `tls`
  std::unique_ptr<TlsSocket> tls;  // from its first byte on
  std::string address, neighbourhood;
  Clock::time_point endBy;
  Slots::iterator place;
  bool gone = false;
};

TlsListener::TlsListener(asio::io_context& io, std::chrono::milliseconds patience,
                         Accepted accepted)
    : m_io(io), m_patience(patience), m_accepted(std::move(accepted)), m_deadline(io) {}

bool TlsListener::Open(const std::vector<std::string>& listen, const TlsRules& rules,
                       std::string* why) {
  if (listen.empty()) return true;
  m_rules = rules;
  m_tls = MakeServerTls(rules, why);
  if (!m_tls) return false;
  return std::all_of(listen.begin(), listen.end(),
                     [&](const std::string& text) { return Listen(text, why); });
}

bool TlsListener::Listen(const std::string& text, std::string* why) {
  const auto endpoint = EndpointOf(text);
  if (!endpoint) return FailWith(why, "\"" + text + "\" is not ADDRESS:PORT");
  std::error_code error;
  asio::ip::tcp::acceptor acceptor(m_io);
  acceptor.open(endpoint->protocol(), error);
  if (!error) acceptor.set_option(asio::socket_base::reuse_address(true), error);
  if (!error) acceptor.bind(*endpoint, error);
  if (!error) acceptor.listen(asio::socket_base::max_listen_connections, error);
  if (error) return FailWith(why, text + ": " + error.message());
  Log(LogLevel::Info, "listening on " + endpoint->address().to_string() + ":" +
                          std::to_string(acceptor.local_endpoint().port()) + " (mutual TLS)");
  m_listeners.emplace_back(std::move(acceptor));
  return true;
}

void TlsListener::Use(Tls tls, const TlsRules& rules) {
  m_tls = std::move(tls);
  m_rules = rules;
}

std::vector<std::string> TlsListener::Addresses() const {
  std::vector<std::string> addresses;
  for (const Listener& listener : m_listeners) {
    std::error_code error;
    const auto endpoint = listener.acceptor.local_endpoint(error);
    if (!error) addresses.push_back(AddressOf(endpoint.address().to_string(), endpoint.port()));
  }
  return addresses;
}

void TlsListener::Start() {
  for (Listener& listener : m_listeners) Accept(listener);
}

void TlsListener::Close() {
  if (std::exchange(m_closed, true)) return;
  std::error_code ignored;
  for (Listener& listener : m_listeners) {
    listener.acceptor.close(ignored);
    listener.again.cancel();
  }
  while (!m_slots.empty()) Leave(m_slots.begin());
  m_deadline.cancel();
}

void TlsListener::Accept(Listener& listener) {
  listener.acceptor.async_accept(
      [this, &listener](const std::error_code& error, asio::ip::tcp::socket socket) {
        if (error == asio::error::operation_aborted || m_closed) return;
        if (error) return AcceptLater(listener);
        Admit(std::move(socket));
        Accept(listener);
      });
}

void TlsListener::AcceptLater(Listener& listener) {
  listener.again.expires_after(kTlsAcceptAgain);
  listener.again.async_wait([this, &listener](const std::error_code& error) {
    if (!error && !m_closed) Accept(listener);
  });
}

void TlsListener::Admit(asio::ip::tcp::socket socket) {
  std::error_code error;
  const auto from = socket.remote_endpoint(error);
  if (error) return;  // the peer has closed it
  socket.set_option(asio::ip::tcp::no_delay(true), error);
  auto slot = std::make_shared<Slot>(std::move(socket));
  slot->address = from.address().to_string();
  slot->neighbourhood = NeighbourhoodOf(from.address());
  slot->endBy = Clock::now() + m_patience;
  MakeRoom(slot->neighbourhood);
  slot->place = m_slots.insert(m_slots.end(), slot);
  ++m_perAddress[slot->neighbourhood];
  if (m_slots.size() == 1) AwaitOldest();
  slot->socket.async_wait(asio::socket_base::wait_read,
                          [this, slot](const std::error_code& failed) {
                            if (slot->gone) return;
                            failed ? Leave(slot->place) : ShakeHands(slot);
                          });
}

void TlsListener::MakeRoom(const std::string& newcomer) {
  if (m_perAddress[newcomer] >= kSlotsPerAddress) return DropOldest(newcomer);
  if (m_slots.size() < kSlotsMax) return;
  const auto most = std::max_element(
      m_perAddress.begin(), m_perAddress.end(),
      [](const auto& one, const auto& other) { return one.second < other.second; });
  DropOldest(std::string(most->first));
}

void TlsListener::DropOldest(const std::string& address) {
  const auto find = [&](bool silent) {
    return std::find_if(m_slots.begin(), m_slots.end(), [&](const auto& slot) {
      return slot->neighbourhood == address && (!silent || !slot->tls);
    });
  };
  auto oldest = find(true);
  if (oldest == m_slots.end()) oldest = find(false);
  if (oldest == m_slots.end()) return;
  ReportDropped((*oldest)->address);
  Leave(oldest);
}

// A flood of connections must not become a flood in the log.
void TlsListener::ReportDropped(const std::string& address) {
  ++m_dropped;
  const Clock::time_point now = Clock::now();
  if (now < m_nextReport) return;
  m_nextReport = now + kReportEvery;
  Log(LogLevel::Warning, address + ": too many connections without a handshake, " +
                             std::to_string(std::exchange(m_dropped, 0)) + " were closed");
}

void TlsListener::ShakeHands(const std::shared_ptr<Slot>& slot) {
  slot->tls = std::make_unique<TlsSocket>(std::move(slot->socket), *m_tls);
  slot->tls->async_handshake(
      asio::ssl::stream_base::server,
      [this, slot](const std::error_code& failed) { OnShaken(slot, failed); });
}

void TlsListener::OnShaken(const std::shared_ptr<Slot>& slot, const std::error_code& failed) {
  if (slot->gone) return;
  SSL* const native = slot->tls->native_handle();
  if (failed) {
    Log(LogLevel::Warning, slot->address + " is refused: " + TlsReason(native, failed));
    return Leave(slot->place);
  }
  const TlsPeer peer = PeerOf(native, m_rules.roles);
  std::unique_ptr<TlsSocket> socket = std::move(slot->tls);
  Leave(slot->place);
  m_accepted(std::move(socket), peer, slot->address);
}

void TlsListener::Leave(Slots::iterator at) {
  const std::shared_ptr<Slot> slot = *at;
  slot->gone = true;
  slot->Close();
  m_slots.erase(at);
  const auto entry = m_perAddress.find(slot->neighbourhood);
  if (--entry->second == 0) m_perAddress.erase(entry);
}

// One timer for all: slots are in the order of their deadlines.
void TlsListener::AwaitOldest() {
  if (m_slots.empty() || m_closed) return;
  m_deadline.expires_at(m_slots.front()->endBy);
  m_deadline.async_wait([this](const std::error_code& error) {
    if (error || m_closed) return;
    while (!m_slots.empty() && m_slots.front()->endBy <= Clock::now()) {
      Log(LogLevel::Warning, m_slots.front()->address + " is refused: it does not shake hands");
      Leave(m_slots.begin());
    }
    AwaitOldest();
  });
}
