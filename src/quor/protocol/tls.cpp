#include "quor/protocol/tls.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

#include "base/fail_with.h"

namespace {

using quor::wire::Role;

std::string Environment(const char* name) {
  const char* const value = secure_getenv(name);
  return value ? value : "";
}

bool KeyIsPrivate(const std::string& path, std::string* why) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return FailOn(why, path);
  if ((status.st_mode & 077) != 0) return FailWith(why, path + ": others may read it (chmod 600)");
  return true;
}

bool LoadKeys(asio::ssl::context& context, const std::string& folder, const std::string& side,
              std::string* why) {
  const std::string key = folder + "/" + side + ".key";
  const std::string certificate = folder + "/" + side + ".crt";
  if (!KeyIsPrivate(key, why)) return false;
  std::error_code error;
  context.load_verify_file(folder + "/ca.crt", error);
  if (error) return FailWith(why, folder + "/ca.crt: " + error.message());
  context.use_certificate_chain_file(certificate, error);
  if (error) return FailWith(why, certificate + ": " + error.message());
  context.use_private_key_file(key, asio::ssl::context::pem, error);
  if (error) return FailWith(why, key + ": " + error.message());
  // A key of another kind than the certificate's is taken until here, and then no connection is.
  ERR_clear_error();
  const bool belong = SSL_CTX_check_private_key(context.native_handle()) == 1;
  ERR_clear_error();
  return belong || FailWith(why, key + ": is not the key of " + certificate);
}

std::shared_ptr<asio::ssl::context> MakeTls(asio::ssl::context::method method,
                                            const std::string& folder, const std::string& side,
                                            std::string* why) {
  auto context = std::make_shared<asio::ssl::context>(method);
  SSL_CTX* const native = context->native_handle();
  SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
  SSL_CTX_set_options(native, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION);
  // No resumption: every connection shows its certificate, also one that has expired since.
  SSL_CTX_set_session_cache_mode(native, SSL_SESS_CACHE_OFF);
  SSL_CTX_set_num_tickets(native, 0);
  SSL_CTX_set_options(native, SSL_OP_NO_TICKET);
  context->set_verify_mode(asio::ssl::verify_peer | asio::ssl::verify_fail_if_no_peer_cert);
  return LoadKeys(*context, folder, side, why) ? context : nullptr;
}

std::string SubjectText(const X509* certificate, int nid) {
  char text[256] = {};
  const int bytes = X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), nid, text,
                                              static_cast<int>(sizeof text));
  return bytes > 0 ? std::string(text) : std::string();
}

bool IsAddress(const std::string& host) {
  unsigned char address[sizeof(in6_addr)];
  return inet_pton(AF_INET, host.c_str(), address) == 1 ||
         inet_pton(AF_INET6, host.c_str(), address) == 1;
}

}  // namespace

std::string KeysFolder() {
  if (std::string folder = Environment("QUOR_KEYS"); !folder.empty()) return folder;
  std::string folder = Environment("XDG_CONFIG_HOME");
  if (folder.empty()) folder = Environment("HOME") + "/.config";
  return folder + "/quor/keys";
}

std::shared_ptr<asio::ssl::context> MakeServerTls(const TlsRules& rules, std::string* why) {
  auto context = MakeTls(asio::ssl::context::tls_server, rules.keysFolder, "server", why);
  if (!context || rules.revoked.empty()) return context;
  return UseRevocations(context->native_handle(), rules.revoked, why) ? context : nullptr;
}

// A list that is there and cannot be read is a reason to refuse, not to do without.
std::shared_ptr<asio::ssl::context> MakeClientTls(const std::string& keysFolder, std::string* why,
                                                  const std::string& revoked) {
  auto context = MakeTls(asio::ssl::context::tls_client, keysFolder, "client", why);
  std::string lists = keysFolder + "/crl.pem";
  struct stat status {};
  if (lstat(lists.c_str(), &status) != 0 && errno == ENOENT) lists = revoked;
  if (!context || lists.empty()) return context;
  return UseRevocations(context->native_handle(), lists, why) ? context : nullptr;
}

void PrepareClientTls(SSL* tls, const std::string& host) {
  X509_VERIFY_PARAM* const check = SSL_get0_param(tls);
  X509_VERIFY_PARAM_set_hostflags(check, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  if (IsAddress(host)) {
    X509_VERIFY_PARAM_set1_ip_asc(check, host.c_str());
    return;
  }
  X509_VERIFY_PARAM_set1_host(check, host.c_str(), host.size());
  SSL_set_tlsext_host_name(tls, host.c_str());
}

std::string TlsReason(SSL* tls, const std::error_code& error) {
  const long verified = SSL_get_verify_result(tls);
  if (verified != X509_V_OK)
    return std::string("the certificate is refused: ") + X509_verify_cert_error_string(verified);
  return "TLS: " + error.message();
}

TlsPeer PeerOf(SSL* tls, const RoleRules& rules) {
  TlsPeer peer;
  if (SSL_get_verify_result(tls) != X509_V_OK) return peer;
  peer.shown = ShownBy(tls);
  if (!peer.shown.own) return peer;
  peer.name = SubjectText(peer.shown.own.get(), NID_commonName);
  peer.role = RoleIn(peer.shown.own.get(), rules);
  return peer;
}

bool RoleAllows(Role held, Role needed) {
  if (needed == quor::wire::ROLE_NONE) return false;
  return held == needed ||
         (held == quor::wire::ROLE_CONFIGURE && needed == quor::wire::ROLE_MONITOR);
}

std::string RoleName(Role role) {
  switch (role) {
    case quor::wire::ROLE_MONITOR:
      return "monitor";
    case quor::wire::ROLE_CONFIGURE:
      return "configure";
    case quor::wire::ROLE_FORWARD:
      return "forward";
    default:
      return "";
  }
}

std::optional<Role> RoleOf(const std::string& name) {
  for (const Role role :
       {quor::wire::ROLE_MONITOR, quor::wire::ROLE_CONFIGURE, quor::wire::ROLE_FORWARD})
    if (RoleName(role) == name) return role;
  return std::nullopt;
}
