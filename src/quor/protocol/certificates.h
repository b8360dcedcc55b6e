// What certificates say beyond the handshake: the role that they give, when they end, and whether
// they have been revoked.
//
// Errors   False, "" or ROLE_NONE, and a reason where there is a parameter for it.
// Threads  Any.
#pragma once

#include <openssl/ssl.h>

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quor/protocol/quor.pb.h"

// Where the role of a peer stands in its certificate.
struct RoleRules {
  bool fromAltNames =
      false;  // subject alternative names (URI, DNS, e-mail); else OU of the subject
  // A role and a text that gives it. When there is any, only these count. Otherwise the text is the
  // name of the role, and as an alternative name the URI "quor:" and the name of the role.
  std::vector<std::pair<quor::wire::Role, std::string>> texts;
  bool operator==(const RoleRules&) const = default;
};
// The greatest role of the certificate: configure, then monitor, then forward.
quor::wire::Role RoleIn(const X509* certificate, const RoleRules& rules);
// "monitor=Operations"; nothing and a reason for other texts.
std::optional<std::pair<quor::wire::Role, std::string>> MappedRole(const std::string& text,
                                                                   std::string* why = nullptr);

// The files and rules by which a service checks its peers.
struct TlsRules {
  std::string keysFolder = {};
  std::string revoked = {};  // a file of revocation lists (PEM); empty: none
  RoleRules roles = {};
};
// From now on a certificate is refused when a list of its issuer names it, when there is no list of
// its issuer, or when that list has expired. Fails for a file without a list, or with one that has
// expired.
bool UseRevocations(SSL_CTX* context, const std::string& file, std::string* why);

// Have the two folders of keys the same authority (ca.crt)?
bool IsSameAuthority(const std::string& keysFolder, const std::string& other);

// A certificate or revocation list in use, and its last second.
struct CertificateDate {
  std::string what;
  std::time_t ends = 0;
};
// The certificate of this side, those of authorities, and revocation lists.
std::vector<CertificateDate> DatesOf(SSL_CTX* context, const TlsRules& rules);
// "WHAT expires in 12 days, on 2026-12-04", from 30 days before; "" earlier. A list of revoked
// certificates is short-lived: from 2 days before.
std::string WarningOf(const CertificateDate& date, std::time_t now);

// The certificate that a peer has shown, with those of the authorities between.
struct ShownCertificate {
  std::shared_ptr<X509> own;
  std::shared_ptr<STACK_OF(X509)> between;
};
ShownCertificate ShownBy(SSL* tls);
std::time_t EndOf(const X509* certificate);
// "" if the context accepts this certificate of a client now, else why not.
std::string WhyNotAccepted(SSL_CTX* context, const ShownCertificate& shown);
