// A connected stream of bytes: a unix socket, TLS over TCP, or TCP within this machine.
//
// Owner    Lives until the handlers of its operations have run, because they hold it (see
//          connection.h).
// Errors   System errors, passed to the handler.
// Threads  The one that runs its io_context.
#pragma once

#include <asio/any_io_executor.hpp>
#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/ssl/stream.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

class ByteStream {
 public:
  using Done = std::function<void(const std::error_code&, std::size_t)>;

  virtual ~ByteStream() = default;
  virtual asio::any_io_executor Executor() = 0;
  virtual void ReadSome(std::span<std::uint8_t> to, Done done) = 0;
  // The bytes live until `done`.
  virtual void WriteAll(const std::vector<asio::const_buffer>& from, Done done) = 0;
  virtual void EndSending() = 0;
  virtual void Close() = 0;
};

using LocalSocket = asio::local::stream_protocol::socket;
using TlsSocket = asio::ssl::stream<asio::ip::tcp::socket>;

std::shared_ptr<ByteStream> MakeStream(LocalSocket socket);
std::shared_ptr<ByteStream> MakeStream(asio::ip::tcp::socket socket);
// REQUIRES: the handshake is done.
std::shared_ptr<ByteStream> MakeStream(std::unique_ptr<TlsSocket> socket);

// Connects to another machine's service: resolves its name, connects, does the handshake and checks
// the certificate against the name. Calls back once: the stream, or null and a reason.
using Connected = std::function<void(std::shared_ptr<ByteStream> stream, std::string why)>;
void ConnectTls(const asio::any_io_executor& executor, std::shared_ptr<asio::ssl::context> context,
                const std::string& host, std::uint16_t port, std::chrono::milliseconds deadline,
                Connected done);
