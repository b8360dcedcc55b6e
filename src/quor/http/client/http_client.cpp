#include "quor/http/client/http_client.h"

#include <array>
#include <asio/connect.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ssl/stream.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>

#include "quor/protocol/tls.h"

// Plain or TLS. The TLS part of a plain one is there and not used.
class HttpClient::WebSocket {
 public:
  WebSocket(asio::io_context& io, asio::ssl::context& context, bool tls)
      : m_stream(io, context), m_tls(tls) {}

  asio::ip::tcp::socket& Socket() { return m_stream.next_layer(); }
  SSL* Tls() { return m_tls ? m_stream.native_handle() : nullptr; }
  template <class Done>
  void ShakeHands(const std::string& host, Done done) {
    if (!m_tls) return done(std::error_code());
    PrepareClientTls(m_stream.native_handle(), host);
    m_stream.async_handshake(asio::ssl::stream_base::client, std::move(done));
  }
  template <class Done>
  void Write(const std::array<asio::const_buffer, 2>& bytes, Done done) {
    if (m_tls)
      asio::async_write(m_stream, bytes, std::move(done));
    else
      asio::async_write(Socket(), bytes, std::move(done));
  }
  template <class Done>
  void Read(asio::mutable_buffer to, Done done) {
    if (m_tls)
      m_stream.async_read_some(to, std::move(done));
    else
      Socket().async_read_some(to, std::move(done));
  }
  // Of a plain one: TLS has words of its own between answers.
  bool HasStrayBytes() {
    std::error_code error;
    return !m_tls && Socket().available(error) > 0;
  }
  // An answer to the closing words of TLS is not waited for: they are not sent.
  void Close() {
    std::error_code ignored;
    Socket().close(ignored);
  }

 private:
  asio::ssl::stream<asio::ip::tcp::socket> m_stream;
  const bool m_tls;
};

// One Post; keeps itself alive until it has called back.
class HttpClient::Exchange final : public std::enable_shared_from_this<Exchange> {
 public:
  Exchange(HttpClient& client, const HttpPost& post, Done done)
      : m_client(client),
        m_body(post.body),
        m_resolver(client.m_io),
        m_timer(client.m_io),
        m_done(std::move(done)) {
    m_head.append("POST ").append(client.m_address.path).append(post.path).append(" HTTP/1.1\r\n");
    m_head.append("Host: ").append(client.m_address.Authority()).append("\r\n");
    m_head.append("Content-Length: ").append(std::to_string(m_body.size())).append("\r\n");
    m_head.append(post.headers).append("\r\n");
  }

  void Start() {
    m_timer.expires_after(m_client.m_deadline);
    m_timer.async_wait([self = shared_from_this()](const std::error_code& error) {
      if (!error) self->Fail("no answer in time");
    });
    m_socket = std::exchange(m_client.m_kept, nullptr);
    // What came without a question would be taken for the answer.
    if (m_socket && m_socket->HasStrayBytes()) m_socket = nullptr;
    m_isKept = m_socket != nullptr;
    m_isKept ? Send() : Resolve();
  }
  void Stop() {
    m_done = nullptr;
    End();
  }

 private:
  void Resolve() {
    m_socket = std::make_shared<WebSocket>(m_client.m_io, *m_client.m_tls, m_client.m_address.tls);
    m_resolver.async_resolve(m_client.m_address.host, std::to_string(m_client.m_address.port),
                             [self = shared_from_this()](const std::error_code& error, auto found) {
                               if (!self->m_done) return;
                               error ? self->Fail(error.message()) : self->Connect(found);
                             });
  }
  void Connect(const asio::ip::tcp::resolver::results_type& found) {
    asio::async_connect(m_socket->Socket(), found,
                        [self = shared_from_this()](const std::error_code& error, const auto&) {
                          if (!self->m_done) return;
                          error ? self->Fail(error.message()) : self->ShakeHands();
                        });
  }
  void ShakeHands() {
    std::error_code ignored;
    m_socket->Socket().set_option(asio::ip::tcp::no_delay(true), ignored);
    m_socket->ShakeHands(
        m_client.m_address.host, [self = shared_from_this()](const std::error_code& error) {
          if (!self->m_done) return;
          error ? self->Fail(TlsReason(self->m_socket->Tls(), error)) : self->Send();
        });
  }
  // A service may answer before it has read everything, so both directions run at once.
  void Send() {
    m_socket->Write({asio::buffer(m_head), asio::buffer(m_body)},
                    [self = shared_from_this(), socket = m_socket](const std::error_code&, auto) {
                      self->m_isSent |= socket == self->m_socket;
                    });
    Read();
  }
  void Read() {
    m_socket->Read(asio::buffer(m_bytes), [self = shared_from_this(), socket = m_socket](
                                              const std::error_code& error, std::size_t bytes) {
      if (self->m_done && socket == self->m_socket) self->Take(error, bytes);
    });
  }
  void Take(const std::error_code& error, std::size_t bytes) {
    const std::size_t used = m_reader.Feed(Bytes(m_bytes).first(bytes));
    if (error) {
      if (m_isKept && m_reader.IsIdle()) return Again();
      // With TLS 1.3 a service refuses our certificate only here.
      if (error.category() == asio::error::get_ssl_category())
        return Fail(TlsReason(m_socket->Tls(), error));
      m_reader.End();
    }
    if (m_reader.Now() == HttpResponseReader::State::Failed) return Fail(m_reader.Why());
    if (m_reader.Now() != HttpResponseReader::State::Complete) return Read();
    HttpResult result;
    result.response = std::move(m_reader.Response());
    result.status = result.response.status;
    // What came behind the answer was not asked for, and nothing may follow a body half sent.
    const bool keeps = result.response.keepsAlive && !error && used == bytes && m_isSent;
    if (keeps) m_client.m_kept = m_socket;
    Finish(std::move(result), keeps);
  }
  // The service had closed the connection that was kept.
  void Again() {
    m_isKept = false;
    m_isSent = false;
    m_socket->Close();
    Resolve();
  }
  void Fail(const std::string& why) {
    HttpResult result;
    result.why = why;
    Finish(std::move(result), false);
  }
  void Finish(HttpResult result, bool keeps) {
    if (!m_done) return;
    if (keeps) m_socket = nullptr;
    End();
    std::exchange(m_done, nullptr)(std::move(result));
  }
  void End() {
    m_timer.cancel();
    m_resolver.cancel();
    if (m_socket) m_socket->Close();
  }

  HttpClient& m_client;
  std::string m_head;
  const std::string_view m_body;
  asio::ip::tcp::resolver m_resolver;
  asio::steady_timer m_timer;
  std::shared_ptr<WebSocket> m_socket;
  HttpResponseReader m_reader;
  std::array<std::uint8_t, 8192> m_bytes;
  bool m_isKept = false, m_isSent = false;
  Done m_done;  // empty once called
};

HttpClient::HttpClient(asio::io_context& io, WebAddress address,
                       std::shared_ptr<asio::ssl::context> tls, std::chrono::milliseconds deadline)
    : m_io(io),
      m_address(std::move(address)),
      m_tls(tls ? std::move(tls)
                : std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client)),
      m_deadline(deadline) {}

void HttpClient::Post(const HttpPost& post, Done done) {
  const auto exchange = std::make_shared<Exchange>(*this, post, std::move(done));
  m_exchange = exchange;
  exchange->Start();
}

void HttpClient::Stop() {
  if (const auto exchange = m_exchange.lock()) exchange->Stop();
  if (m_kept) m_kept->Close();
  m_kept = nullptr;
}
