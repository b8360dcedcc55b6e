// Posts bodies to one web service, over one connection that is kept.
//
// Shape    One Post at a time. A kept connection that the service has closed meanwhile is made
//          again, once, before anything counts as a failure. Redirections are answers as others.
// Owner    The body lives until `done`. No `done` comes after Stop.
// Errors   An answer with any status is an answer. Else `status` is 0, and `why` says the reason. A
//          Post takes no longer than the time it is given, whatever the service does.
// Threads  The one that runs the io_context.
#pragma once

#include <asio/io_context.hpp>
#include <asio/ssl/context.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "quor/http/client/response_reader.h"
#include "quor/http/client/web_address.h"

struct WebTrust {
  std::string ca;                // PEM file; "": what the system trusts
  std::string certificate, key;  // PEM files; "": none is shown
};
// Null and a reason.
std::shared_ptr<asio::ssl::context> MakeWebTls(const WebTrust& trust, std::string* why);

struct HttpPost {
  std::string_view path;     // behind that of the address
  std::string_view headers;  // further lines, each ended by CR LF
  std::string_view body;
};

struct HttpResult {
  int status = 0;
  std::string why;
  HttpResponse response;
};

class HttpClient {
 public:
  using Done = std::function<void(HttpResult)>;

  // `tls`: for an address with https.
  HttpClient(asio::io_context& io, WebAddress address, std::shared_ptr<asio::ssl::context> tls,
             std::chrono::milliseconds deadline = std::chrono::seconds(10));
  ~HttpClient() { Stop(); }
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  void Post(const HttpPost& post, Done done);
  void Stop();

 private:
  class Exchange;
  class WebSocket;
  asio::io_context& m_io;
  const WebAddress m_address;
  const std::shared_ptr<asio::ssl::context> m_tls;
  const std::chrono::milliseconds m_deadline;
  std::shared_ptr<WebSocket> m_kept;
  std::weak_ptr<Exchange> m_exchange;
};
