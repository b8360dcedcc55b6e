// What a client trusts on the web, and whom it says to be.
#include <openssl/err.h>
#include <sys/stat.h>

#include "base/fail_with.h"
#include "quor/http/client/http_client.h"

namespace {

bool ShowCertificate(asio::ssl::context& context, const WebTrust& trust, std::string* why) {
  if (trust.certificate.empty() && trust.key.empty()) return true;
  if (trust.certificate.empty() || trust.key.empty())
    return FailWith(why, "a certificate and its key belong together");
  struct stat status {};
  if (stat(trust.key.c_str(), &status) != 0) return FailOn(why, trust.key);
  if ((status.st_mode & 077) != 0)
    return FailWith(why, trust.key + ": others may read it (chmod 600)");
  std::error_code error;
  context.use_certificate_chain_file(trust.certificate, error);
  if (error) return FailWith(why, trust.certificate + ": " + error.message());
  context.use_private_key_file(trust.key, asio::ssl::context::pem, error);
  if (error) return FailWith(why, trust.key + ": " + error.message());
  const bool belong = SSL_CTX_check_private_key(context.native_handle()) == 1;
  ERR_clear_error();
  return belong || FailWith(why, trust.key + ": is not the key of " + trust.certificate);
}

}  // namespace

std::shared_ptr<asio::ssl::context> MakeWebTls(const WebTrust& trust, std::string* why) {
  auto context = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client);
  SSL_CTX_set_min_proto_version(context->native_handle(), TLS1_2_VERSION);
  SSL_CTX_set_options(context->native_handle(), SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
  context->set_verify_mode(asio::ssl::verify_peer);
  std::error_code error;
  if (trust.ca.empty())
    context->set_default_verify_paths(error);
  else
    context->load_verify_file(trust.ca, error);
  if (error)
    return FailWith(
        why, (trust.ca.empty() ? "the system's authorities" : trust.ca) + ": " + error.message(),
        nullptr);
  return ShowCertificate(*context, trust, why) ? context : nullptr;
}
