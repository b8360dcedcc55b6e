#include "quor/protocol/certificates.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <cstdio>

#include "base/fail_with.h"
#include "quor/protocol/tls.h"

namespace {

using quor::wire::Role;

constexpr std::time_t kSecondsOfADay = 24 * 60 * 60;
constexpr std::time_t kWarnSeconds = 30 * kSecondsOfADay, kWarnOfListSeconds = 2 * kSecondsOfADay;
constexpr int kListsMax = 64;
constexpr const char* kListWords = "the revocation list of ";
constexpr Role kRolesByRank[] = {quor::wire::ROLE_CONFIGURE, quor::wire::ROLE_MONITOR,
                                 quor::wire::ROLE_FORWARD};

std::string TextOf(const ASN1_STRING* string) {
  unsigned char* utf8 = nullptr;
  const int length = ASN1_STRING_to_UTF8(&utf8, string);
  if (length < 0) return {};
  std::string text(reinterpret_cast<char*>(utf8), static_cast<std::size_t>(length));
  OPENSSL_free(utf8);
  // A text with such a byte inside may look like another one.
  return text.find('\0') == text.npos ? text : std::string();
}

std::vector<std::string> Units(const X509* certificate) {
  std::vector<std::string> units;
  const X509_NAME* const subject = X509_get_subject_name(certificate);
  for (int at = -1;
       (at = X509_NAME_get_index_by_NID(subject, NID_organizationalUnitName, at)) >= 0;)
    units.push_back(TextOf(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, at))));
  return units;
}

std::vector<std::string> AltNamesIn(const X509* certificate) {
  std::vector<std::string> names;
  auto* const list = static_cast<GENERAL_NAMES*>(
      X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
  for (int i = 0; i < sk_GENERAL_NAME_num(list); ++i) {
    int type = 0;
    const void* const value = GENERAL_NAME_get0_value(sk_GENERAL_NAME_value(list, i), &type);
    if (type == GEN_URI || type == GEN_DNS || type == GEN_EMAIL)
      names.push_back(TextOf(static_cast<const ASN1_STRING*>(value)));
  }
  GENERAL_NAMES_free(list);
  return names;
}

bool Gives(const std::string& text, Role role, const RoleRules& rules) {
  if (text.empty()) return false;
  if (rules.texts.empty())
    return text == (rules.fromAltNames ? "quor:" + RoleName(role) : RoleName(role));
  return std::any_of(rules.texts.begin(), rules.texts.end(), [&](const auto& given) {
    return given.first == role && given.second == text;
  });
}

std::time_t TimeOf(const ASN1_TIME* time) {
  tm parts{};
  return time && ASN1_TIME_to_tm(time, &parts) == 1 ? timegm(&parts) : 0;
}

std::string NameOf(const X509_NAME* name) {
  const int at = X509_NAME_get_index_by_NID(name, NID_commonName, -1);
  if (at >= 0) return TextOf(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, at)));
  char line[256] = {};
  X509_NAME_oneline(name, line, sizeof line);
  return line;
}

std::string DayOf(std::time_t time) {
  tm parts{};
  gmtime_r(&time, &parts);
  char text[16];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &parts)};
}

bool AddList(X509_STORE* store, X509_CRL* list, const std::string& file, std::string* why) {
  const std::time_t ends = TimeOf(X509_CRL_get0_nextUpdate(list));
  if (ends != 0 && ends < std::time(nullptr))
    return FailWith(why, file + ": " + kListWords + NameOf(X509_CRL_get_issuer(list)) +
                             " has expired on " + DayOf(ends));
  return X509_STORE_add_crl(store, list) == 1 || FailWith(why, file + ": cannot be used");
}

}  // namespace

Role RoleIn(const X509* certificate, const RoleRules& rules) {
  const std::vector<std::string> texts =
      rules.fromAltNames ? AltNamesIn(certificate) : Units(certificate);
  for (const Role role : kRolesByRank)
    for (const std::string& text : texts)
      if (Gives(text, role, rules)) return role;
  return quor::wire::ROLE_NONE;
}

std::optional<std::pair<Role, std::string>> MappedRole(const std::string& text, std::string* why) {
  const std::size_t sign = text.find('=');
  const std::optional<Role> role = RoleOf(text.substr(0, sign));
  if (role && sign != text.npos && sign + 1 < text.size())
    return std::pair(*role, text.substr(sign + 1));
  return FailWith(why,
                  "\"" + text + "\" is not ROLE=TEXT with the role monitor, configure or forward",
                  std::nullopt);
}

bool UseRevocations(SSL_CTX* context, const std::string& file, std::string* why) {
  FILE* const stream = std::fopen(file.c_str(), "re");
  if (!stream) return FailOn(why, file);
  X509_STORE* const store = SSL_CTX_get_cert_store(context);
  int lists = 0;
  bool good = true;
  while (X509_CRL* const list = PEM_read_X509_CRL(stream, nullptr, nullptr, nullptr)) {
    good = good && lists < kListsMax && AddList(store, list, file, why);
    ++lists;
    X509_CRL_free(list);
  }
  std::fclose(stream);
  ERR_clear_error();  // the end of the file is one
  if (lists > kListsMax) return FailWith(why, file + ": holds too many revocation lists");
  if (!good) return false;
  if (lists == 0) return FailWith(why, file + ": holds no revocation list (PEM)");
  X509_STORE_set_flags(store, X509_V_FLAG_CRL_CHECK);
  return true;
}

bool IsSameAuthority(const std::string& keysFolder, const std::string& other) {
  const auto read = [](const std::string& folder) {
    FILE* const file = std::fopen((folder + "/ca.crt").c_str(), "re");
    X509* const made = file ? PEM_read_X509(file, nullptr, nullptr, nullptr) : nullptr;
    if (file) std::fclose(file);
    return std::unique_ptr<X509, decltype(&X509_free)>(made, X509_free);
  };
  const auto first = read(keysFolder), second = read(other);
  ERR_clear_error();  // a file may be missing
  return first && second && X509_cmp(first.get(), second.get()) == 0;
}

std::vector<CertificateDate> DatesOf(SSL_CTX* context, const TlsRules& rules) {
  std::vector<CertificateDate> dates;
  if (const X509* const own = SSL_CTX_get0_certificate(context))
    dates.push_back({"the certificate of this service in " + rules.keysFolder, EndOf(own)});
  const STACK_OF(X509_OBJECT)* const objects =
      X509_STORE_get0_objects(SSL_CTX_get_cert_store(context));
  for (int i = 0; i < sk_X509_OBJECT_num(objects); ++i) {
    const X509_OBJECT* const object = sk_X509_OBJECT_value(objects, i);
    if (const X509* const authority = X509_OBJECT_get0_X509(object))
      dates.push_back(
          {"the authority " + NameOf(X509_get_subject_name(authority)) + " in " + rules.keysFolder,
           EndOf(authority)});
    if (X509_CRL* const list = X509_OBJECT_get0_X509_CRL(const_cast<X509_OBJECT*>(object)))
      dates.push_back(
          {kListWords + NameOf(X509_CRL_get_issuer(list)), TimeOf(X509_CRL_get0_nextUpdate(list))});
  }
  return dates;
}

std::string WarningOf(const CertificateDate& date, std::time_t now) {
  const bool isList = date.what.starts_with(kListWords);
  const std::time_t left = date.ends - now;
  if (date.ends == 0 || left > (isList ? kWarnOfListSeconds : kWarnSeconds)) return {};
  if (left < 0)
    return date.what + " has expired on " + DayOf(date.ends) +
           (isList ? ": no certificate is accepted" : "");
  const std::time_t days = left / kSecondsOfADay;
  const std::string when =
      days == 0 ? "within a day" : "in " + std::to_string(days) + (days == 1 ? " day" : " days");
  return date.what + " expires " + when + ", on " + DayOf(date.ends);
}

ShownCertificate ShownBy(SSL* tls) {
  ShownCertificate shown;
  shown.own = {SSL_get1_peer_certificate(tls), X509_free};
  if (STACK_OF(X509)* const chain = SSL_get_peer_cert_chain(tls))
    shown.between = {X509_chain_up_ref(chain),
                     [](STACK_OF(X509) * stack) { sk_X509_pop_free(stack, X509_free); }};
  return shown;
}

std::time_t EndOf(const X509* certificate) {
  return certificate ? TimeOf(X509_get0_notAfter(certificate)) : 0;
}

std::string WhyNotAccepted(SSL_CTX* context, const ShownCertificate& shown) {
  const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> check(X509_STORE_CTX_new(),
                                                                              X509_STORE_CTX_free);
  if (!check || !shown.own ||
      X509_STORE_CTX_init(check.get(), SSL_CTX_get_cert_store(context), shown.own.get(),
                          shown.between.get()) != 1 ||
      X509_STORE_CTX_set_default(check.get(), "ssl_client") != 1)
    return "it cannot be checked";
  if (X509_verify_cert(check.get()) == 1) return {};
  return X509_verify_cert_error_string(X509_STORE_CTX_get_error(check.get()));
}
