#include "quor/service/local_arrival.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "base/fail_with.h"
#include "quor/link/link_socket.h"
#include "quor/log/log.h"
#include "quor/received/received.h"

namespace {

constexpr std::size_t kLookBytes = 6;
constexpr std::chrono::milliseconds kLookAgain{2};

}  // namespace

LocalArrival::LocalArrival(asio::io_context& io, Host& host, int socket, const LocalPeer& peer)
    : m_io(io), m_host(&host), m_peer(peer), m_socket(io), m_deadline(io), m_again(io) {
  std::error_code ignored;
  m_socket.assign(socket, ignored);
}

LocalArrival::~LocalArrival() {
  if (m_segment >= 0) close(m_segment);
}

void LocalArrival::Start(std::chrono::milliseconds deadline) {
  m_deadline.expires_after(deadline);
  m_deadline.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (!error && self->m_host) self->Refuse("it has sent no hello");
  });
  Await();
}

void LocalArrival::Await() {
  m_socket.async_wait(OwnedDescriptor::wait_read,
                      [self = shared_from_this()](const std::error_code& error) {
                        if (!error && self->m_host) self->OnReadable();
                      });
}

LocalArrival::Kind LocalArrival::Look() {
  std::uint8_t bytes[kLookBytes];
  const ssize_t got = recv(m_socket.native_handle(), bytes, sizeof bytes, MSG_PEEK | MSG_DONTWAIT);
  if (got == 0 || (got < 0 && errno != EAGAIN)) return Kind::Gone;
  // A hello of a client may be as short as its head.
  if (got == kLookBytes - 1 && LoadBe32(bytes) == 1) return Kind::Client;
  if (got < static_cast<ssize_t>(kLookBytes)) return Kind::Unknown;
  return bytes[kLookBytes - 1] == 0 ? Kind::Application : Kind::Client;
}

void LocalArrival::OnReadable() {
  if (m_isApplication) return ReadHello();
  switch (Look()) {
    case Kind::Gone:
      return Finish();
    case Kind::Unknown:
      // The bytes stay readable: look again a little later instead of polling without a pause.
      m_again.expires_after(kLookAgain);
      m_again.async_wait([self = shared_from_this()](const std::error_code& error) {
        if (!error && self->m_host) self->OnReadable();
      });
      return;
    case Kind::Application:
      m_isApplication = true;
      // Its memory and files belong to another user.
      if (!m_peer.isTraced) return Refuse("only programs of the user of this service are traced");
      return ReadHello();
    case Kind::Client: {
      LocalSocket socket(m_io);
      std::error_code error;
      socket.assign(asio::local::stream_protocol(), m_socket.release(), error);
      if (!error) m_host->OnClient(std::move(socket), m_peer);
      return Finish();
    }
  }
}

void LocalArrival::ReadHello() {
  std::uint8_t bytes[4096];
  std::vector<int> descriptors;
  const ssize_t got = ReceiveAll(m_socket.native_handle(), bytes, sizeof bytes, &descriptors);
  const bool ended = got == 0 || (got < 0 && errno != EAGAIN);
  TakeSegment(descriptors);
  const std::uint8_t* from = bytes;
  LinkFrame frame;
  switch (m_decoder.Feed(from, bytes + std::max<ssize_t>(got, 0), frame)) {
    case LinkDecoder::Result::More:
      return ended ? Finish() : Await();
    case LinkDecoder::Result::Error:
      return Refuse(std::string("malformed: ") + m_decoder.Why());
    case LinkDecoder::Result::Frame:
      break;
  }
  std::string why;
  if (!TakeHello(frame, {from, static_cast<const std::uint8_t*>(bytes) + got}, &why))
    return Refuse(why);
  Finish();
}

// What another account sends may be any file: only one in memory is asked for its state.
void LocalArrival::TakeSegment(const std::vector<int>& descriptors) {
  for (const int descriptor : descriptors) {
    ++m_descriptors;
    if (m_segment < 0 && (m_peer.uid == geteuid() || IsInSharedMemory(descriptor)))
      m_segment = descriptor;
    else
      CloseReceived(descriptor);
  }
}

bool LocalArrival::TakeHello(const LinkFrame& frame, Bytes rest, std::string* why) {
  if (frame.type != LinkType::Hello) return FailWith(why, "it does not begin with a hello");
  if (frame.hello.version != kLinkVersion)
    return FailWith(why, "version " + std::to_string(frame.hello.version) +
                             " of the link is not known here, only " +
                             std::to_string(kLinkVersion));
  if (m_descriptors > 1) return FailWith(why, "it brings more than its segment");
  AppArrival arrival{frame.hello,
                     SegmentMap(),
                     OwnedDescriptor(m_io),
                     static_cast<std::uint32_t>(m_peer.pid),
                     {rest.begin(), rest.end()},
                     Account{m_peer.uid}};
  const char* reason = "";
  if (m_descriptors == 1 && m_segment < 0)
    return FailWith(why, "the segment does not lie in memory");
  if (m_segment >= 0 && !arrival.segment.Open(std::exchange(m_segment, -1), &reason))
    return FailWith(why, reason);
  std::error_code error;
  arrival.socket.assign(fcntl(m_socket.native_handle(), F_DUPFD_CLOEXEC, 0), error);
  if (error) return FailWith(why, error.message());
  // From here on the connection may live longer than this.
  m_endsPeer = !m_host->OnApplication(std::move(arrival), why);
  return !m_endsPeer;
}

void LocalArrival::Refuse(const std::string& why) {
  Log(LogLevel::Warning, "process " + std::to_string(m_peer.pid) + " is refused: " + why);
  if (m_isApplication && m_socket.is_open())
    SendOnLink(m_socket.native_handle(), EncodeRefused(why), nullptr, 0, 0);
  Finish();
}

void LocalArrival::Finish() {
  Host* const host = m_host;
  Stop();
  if (host) host->OnGone(*this);
}

void LocalArrival::Stop() {
  m_host = nullptr;
  std::error_code ignored;
  if (m_socket.is_open() && m_endsPeer) EndPeer(m_socket.native_handle());
  m_socket.close(ignored);
  m_deadline.cancel();
  m_again.cancel();
}
