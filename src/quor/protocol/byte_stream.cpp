#include "quor/protocol/byte_stream.h"

#include <asio/connect.hpp>
#include <asio/ssl/host_name_verification.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <cerrno>

#include "quor/protocol/machine.h"
#include "quor/protocol/tls.h"
#include "quor/received/received.h"

namespace {

template <class Socket>
class StreamOver final : public ByteStream {
 public:
  explicit StreamOver(Socket socket) : m_socket(std::move(socket)) {}

  asio::any_io_executor Executor() override { return Stream().get_executor(); }
  void ReadSome(std::span<std::uint8_t> to, Done done) override {
    if constexpr (std::is_same_v<Socket, LocalSocket>) {
      ReadLocal(to, std::move(done));
    } else {
      Stream().async_read_some(asio::buffer(to.data(), to.size()), std::move(done));
    }
  }
  void WriteAll(const std::vector<asio::const_buffer>& from, Done done) override {
    asio::async_write(Stream(), from, std::move(done));
  }
  void EndSending() override {
    std::error_code ignored;
    Stream().lowest_layer().shutdown(asio::socket_base::shutdown_send, ignored);
  }
  void Close() override {
    std::error_code ignored;
    if constexpr (std::is_same_v<Socket, LocalSocket>)
      if (m_socket.is_open()) EndPeer(m_socket.native_handle());
    Stream().lowest_layer().close(ignored);
  }

 private:
  // A peer on this machine may send descriptors.
  void ReadLocal(std::span<std::uint8_t> to, Done done) {
    m_socket.async_wait(asio::socket_base::wait_read,
                        [this, to, done = std::move(done)](const std::error_code& error) mutable {
                          if (error) return done(error, 0);
                          const ssize_t got =
                              ReceiveAll(m_socket.native_handle(), to.data(), to.size(), nullptr);
                          if (got < 0 && errno == EAGAIN) return ReadLocal(to, std::move(done));
                          if (got < 0) return done({errno, std::system_category()}, 0);
                          if (got == 0) return done(asio::error::eof, 0);
                          done({}, static_cast<std::size_t>(got));
                        });
  }
  auto& Stream() {
    if constexpr (std::is_same_v<Socket, std::unique_ptr<TlsSocket>>) {
      return *m_socket;
    } else {
      return m_socket;
    }
  }
  Socket m_socket;
};

// One attempt; keeps itself alive until it has called back.
class TlsAttempt final : public std::enable_shared_from_this<TlsAttempt> {
 public:
  TlsAttempt(const asio::any_io_executor& executor, std::shared_ptr<asio::ssl::context> context,
             std::string host, Connected done)
      : m_context(std::move(context)),
        m_host(std::move(host)),
        m_resolver(executor),
        m_timer(executor),
        m_socket(std::make_unique<TlsSocket>(executor, *m_context)),
        m_done(std::move(done)) {}

  void Start(std::uint16_t port, std::chrono::milliseconds deadline) {
    m_address = AddressOf(m_host, port);
    m_timer.expires_after(deadline);
    m_timer.async_wait([self = shared_from_this()](const std::error_code& error) {
      if (!error) self->Fail("no answer in time");
    });
    m_resolver.async_resolve(m_host, std::to_string(port),
                             [self = shared_from_this()](const std::error_code& error, auto found) {
                               error ? self->Fail(error.message()) : self->Connect(found);
                             });
  }

 private:
  void Connect(const asio::ip::tcp::resolver::results_type& found) {
    if (!m_done) return;
    asio::async_connect(m_socket->lowest_layer(), found,
                        [self = shared_from_this()](const std::error_code& error, const auto&) {
                          error ? self->Fail(ErrorText(error)) : self->ShakeHands();
                        });
  }
  void ShakeHands() {
    if (!m_done) return;
    std::error_code error;
    m_socket->lowest_layer().set_option(asio::ip::tcp::no_delay(true), error);
    PrepareClientTls(m_socket->native_handle(), m_host);
    m_socket->async_handshake(
        asio::ssl::stream_base::client, [self = shared_from_this()](const std::error_code& failed) {
          failed ? self->Fail(TlsReason(self->m_socket->native_handle(), failed)) : self->Succeed();
        });
  }
  void Succeed() {
    if (!m_done) return;
    m_timer.cancel();
    const Connected done = std::exchange(m_done, nullptr);
    done(MakeStream(std::move(m_socket)), {});
  }
  void Fail(const std::string& reason) {
    if (!m_done) return;
    m_timer.cancel();
    m_resolver.cancel();
    std::error_code ignored;
    m_socket->lowest_layer().close(ignored);
    const Connected done = std::exchange(m_done, nullptr);
    done(nullptr, m_address + ": " + reason);
  }
  static std::string ErrorText(const std::error_code& error) {
    const bool refused = error == asio::error::connection_refused;
    return error.message() + (refused ? "; start quord there with --listen" : "");
  }

  std::shared_ptr<asio::ssl::context> m_context;
  std::string m_host, m_address;
  asio::ip::tcp::resolver m_resolver;
  asio::steady_timer m_timer;
  std::unique_ptr<TlsSocket> m_socket;
  Connected m_done;  // empty once called
};

}  // namespace

std::shared_ptr<ByteStream> MakeStream(LocalSocket socket) {
  return std::make_shared<StreamOver<LocalSocket>>(std::move(socket));
}

std::shared_ptr<ByteStream> MakeStream(asio::ip::tcp::socket socket) {
  return std::make_shared<StreamOver<asio::ip::tcp::socket>>(std::move(socket));
}

std::shared_ptr<ByteStream> MakeStream(std::unique_ptr<TlsSocket> socket) {
  return std::make_shared<StreamOver<std::unique_ptr<TlsSocket>>>(std::move(socket));
}

void ConnectTls(const asio::any_io_executor& executor, std::shared_ptr<asio::ssl::context> context,
                const std::string& host, std::uint16_t port, std::chrono::milliseconds deadline,
                Connected done) {
  std::make_shared<TlsAttempt>(executor, std::move(context), host, std::move(done))
      ->Start(port, deadline);
}
