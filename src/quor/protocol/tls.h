// Mutual TLS: which peers are accepted, and with which role.
//
// Shape    A keys folder holds ca.crt, and server.crt and server.key or client.crt and client.key
//          (PEM). TLS 1.2 or later. Both sides show a certificate of that one authority, made for
//          their side of the connection. A client's role is in its certificate.
// Errors   Null and a reason. A key that others may read is refused.
// Threads  Any.
#pragma once

#include <openssl/ssl.h>

#include <asio/ssl/context.hpp>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "quor/protocol/certificates.h"

// $QUOR_KEYS, else $XDG_CONFIG_HOME/quor/keys, else ~/.config/quor/keys.
std::string KeysFolder();

std::shared_ptr<asio::ssl::context> MakeServerTls(const TlsRules& rules, std::string* why);
// The server's certificate must not be in the revocation lists of the folder's crl.pem, or of
// `revoked` where the folder has none. Neither: nothing is checked.
std::shared_ptr<asio::ssl::context> MakeClientTls(const std::string& keysFolder, std::string* why,
                                                  const std::string& revoked = {});

// Before a client's handshake: the certificate must be for this name or address.
void PrepareClientTls(SSL* tls, const std::string& host);
// A message for a failed handshake, with the reason of the certificate check if that failed.
std::string TlsReason(SSL* tls, const std::error_code& error);

struct TlsPeer {
  std::string name;  // CN
  quor::wire::Role role = quor::wire::ROLE_NONE;
  ShownCertificate shown;
};
// After a server's handshake. A certificate without a known role has no rights.
TlsPeer PeerOf(SSL* tls, const RoleRules& rules = {});

// May a peer with the role `held` do what needs `needed`? configure includes monitor.
bool RoleAllows(quor::wire::Role held, quor::wire::Role needed);
// "monitor", "configure", "forward"; "" for others.
std::string RoleName(quor::wire::Role role);
std::optional<quor::wire::Role> RoleOf(const std::string& name);
