#include "quor/protocol/keys.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "base/fail_with.h"
#include "base/make_folder.h"
#include "quor/protocol/machine.h"
#include "quor/protocol/tls.h"

namespace {

template <class T, void (*Free)(T*)>
struct Freer {
  void operator()(T* object) const { Free(object); }
};
using Key = std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY, EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freer<X509, X509_free>>;

constexpr long kDaySeconds = 24 * 60 * 60;
constexpr long kClockSlackSeconds = 60 * 60;  // the other machine's clock may be behind ours

struct Subject {
  std::string name, role;
  std::string email = {};  // empty: none
};
struct Extension {
  int nid;
  std::string value;
};

bool AddText(X509_NAME* subject, int nid, const std::string& text) {
  return text.empty() ||
         X509_NAME_add_entry_by_NID(subject, nid, MBSTRING_UTF8,
                                    reinterpret_cast<const unsigned char*>(text.data()),
                                    static_cast<int>(text.size()), -1, 0) == 1;
}

bool AddExtension(X509* certificate, X509* issuer, const Extension& extension) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* const made =
      X509V3_EXT_conf_nid(nullptr, &context, extension.nid, extension.value.c_str());
  const bool added = made && X509_add_ext(certificate, made, -1) == 1;
  X509_EXTENSION_free(made);
  return added;
}

// Not by the small language of extensions: a name may have its separators.
bool AddEmail(X509* certificate, const std::string& email) {
  if (email.empty()) return true;
  GENERAL_NAMES* const names = GENERAL_NAMES_new();
  GENERAL_NAME* const name = GENERAL_NAME_new();
  ASN1_IA5STRING* const text = ASN1_IA5STRING_new();
  bool added = names && name && text &&
               ASN1_STRING_set(text, email.data(), static_cast<int>(email.size())) == 1 &&
               sk_GENERAL_NAME_push(names, name) > 0;
  if (added) {
    GENERAL_NAME_set0_value(name, GEN_EMAIL, text);
    added = X509_add1_ext_i2d(certificate, NID_subject_alt_name, names, 0, 0) == 1;
  } else {
    ASN1_IA5STRING_free(text);
    GENERAL_NAME_free(name);
  }
  GENERAL_NAMES_free(names);
  return added;
}

bool SetSerial(X509* certificate) {
  unsigned char bytes[16];
  if (RAND_bytes(bytes, sizeof bytes) != 1) return false;
  bytes[0] &= 0x7F;
  BIGNUM* const number = BN_bin2bn(bytes, sizeof bytes, nullptr);
  const bool set = number && BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate));
  BN_free(number);
  return set;
}

// Signed by the issuer, or by itself if there is none.
Certificate MakeCertificate(const Subject& subject, EVP_PKEY* key, X509* issuer,
                            EVP_PKEY* issuerKey, int days,
                            const std::vector<Extension>& extensions) {
  Certificate made(X509_new());
  if (!made || X509_set_version(made.get(), 2) != 1 || !SetSerial(made.get())) return nullptr;
  const long ends = days * kDaySeconds;
  X509_gmtime_adj(X509_getm_notBefore(made.get()), std::min(0L, ends) - kClockSlackSeconds);
  X509_gmtime_adj(X509_getm_notAfter(made.get()), ends);
  X509_NAME* const name = X509_get_subject_name(made.get());
  if (!AddText(name, NID_organizationalUnitName, subject.role) ||
      !AddText(name, NID_commonName, subject.name))
    return nullptr;
  X509* const by = issuer ? issuer : made.get();
  if (X509_set_issuer_name(made.get(), X509_get_subject_name(by)) != 1 ||
      X509_set_pubkey(made.get(), key) != 1)
    return nullptr;
  for (const Extension& extension : extensions)
    if (!AddExtension(made.get(), by, extension)) return nullptr;
  if (!AddEmail(made.get(), subject.email)) return nullptr;
  if (X509_sign(made.get(), issuerKey ? issuerKey : key, EVP_sha256()) == 0) return nullptr;
  return made;
}

// Creates the file, which must not exist, and lets `write` fill it.
template <class Write>
bool WriteNew(const std::string& path, mode_t mode, std::string* why, Write&& write) {
  const int descriptor =
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
  if (descriptor < 0) return FailOn(why, path);
  FILE* const file = fdopen(descriptor, "w");
  const bool written = write(file);
  return (std::fclose(file) == 0 && written) || FailWith(why, path + ": cannot be written");
}

bool WriteKey(const std::string& path, EVP_PKEY* key, std::string* why) {
  return WriteNew(path, 0600, why, [key](FILE* file) {
    return PEM_write_PrivateKey(file, key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
  });
}

bool WriteCertificate(const std::string& path, X509* certificate, std::string* why) {
  return WriteNew(path, 0644, why,
                  [certificate](FILE* file) { return PEM_write_X509(file, certificate) == 1; });
}

template <class Object, class Read>
Object ReadPem(const std::string& path, Read&& read, std::string* why) {
  FILE* const file = std::fopen(path.c_str(), "re");
  if (!file) return FailWith(why, path + ": " + SystemReason(), nullptr);
  Object object(read(file));
  std::fclose(file);
  if (!object) return FailWith(why, path + ": has no usable content", nullptr);
  return object;
}

bool Exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

std::string AltNames(const ServerNames& names) {
  std::string list;
  for (const std::string& host : names.hosts) list += (list.empty() ? "DNS:" : ",DNS:") + host;
  for (const std::string& address : names.addresses)
    list += (list.empty() ? "IP:" : ",IP:") + address;
  return list;
}

// Every text goes into an extension's small language, so it must not contain its separators.
bool AreNames(const ServerNames& names) {
  for (const auto* list : {&names.hosts, &names.addresses})
    for (const std::string& text : *list)
      if (text.empty() || text.find_first_of(", \t\r\n") != text.npos) return false;
  return true;
}

std::vector<Extension> LeafExtensions(const char* use) {
  return {{NID_basic_constraints, "critical,CA:FALSE"},
          {NID_key_usage, "critical,digitalSignature"},
          {NID_ext_key_usage, use}};
}

bool IsPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char byte) { return byte >= ' ' && byte <= '~'; });
}

// Such a name of a certificate has ASCII bytes only; servers refuse the whole certificate
// otherwise.
std::string EmailOf(const std::string& name, const std::string& role) {
  return IsPlain(name) ? name + "@" + role + ".quor" : "";
}

struct Identity {
  Key key;
  Certificate certificate;
};

Certificate ReadCertificate(const std::string& path, std::string* why) {
  return ReadPem<Certificate>(
      path, [](FILE* file) { return PEM_read_X509(file, nullptr, nullptr, nullptr); }, why);
}

Identity ReadAuthority(const std::string& folder, std::string* why) {
  Identity authority;
  authority.certificate = ReadCertificate(folder + "/ca.crt", why);
  if (authority.certificate)
    authority.key = ReadPem<Key>(
        folder + "/ca.key",
        [](FILE* file) { return PEM_read_PrivateKey(file, nullptr, nullptr, nullptr); }, why);
  return authority;
}

Identity MakeLeaf(const Identity& authority, const Subject& subject, int days,
                  const std::vector<Extension>& extensions) {
  Identity leaf;
  leaf.key.reset(EVP_EC_gen("P-256"));
  if (leaf.key)
    leaf.certificate = MakeCertificate(subject, leaf.key.get(), authority.certificate.get(),
                                       authority.key.get(), days, extensions);
  return leaf;
}

Identity MakeServer(const Identity& authority, const std::string& name, const ServerNames& names,
                    int days, const char* use) {
  std::vector<Extension> extensions = LeafExtensions(use);
  extensions.push_back({NID_subject_alt_name, AltNames(names)});
  return MakeLeaf(authority, {name, "server"}, days, extensions);
}

bool Write(const std::string& path, const Identity& identity, std::string* why) {
  return WriteKey(path + ".key", identity.key.get(), why) &&
         WriteCertificate(path + ".crt", identity.certificate.get(), why);
}

}  // namespace

ServerNames OwnNames() {
  ServerNames names{{LocalHostName()}, {"127.0.0.1", "::1"}};
  char whole[256] = {};
  if (gethostname(whole, sizeof whole - 1) == 0 && names.hosts.front() != whole)
    names.hosts.emplace_back(whole);
  if (names.hosts.front() != "localhost") names.hosts.emplace_back("localhost");
  return names;
}

bool InitKeys(const std::string& folder, const ServerNames& names, std::string* why, int days) {
  if (!AreNames(names) || names.hosts.empty())
    return FailWith(why, "a name or address of the server cannot be used");
  if (!MakeFolder(folder, why)) return false;
  for (const char* file : {"/ca.crt", "/ca.key", "/server.crt", "/server.key"})
    if (Exists(folder + file)) return FailWith(why, folder + file + " exists already");
  Identity authority;
  authority.key.reset(EVP_EC_gen("P-256"));
  if (!authority.key) return FailWith(why, "no keys can be made");
  authority.certificate = MakeCertificate({"Quor authority of " + names.hosts.front(), ""},
                                          authority.key.get(), nullptr, nullptr, 10 * 365,
                                          {{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
                                           {NID_key_usage, "critical,keyCertSign,cRLSign"}});
  if (!authority.certificate) return FailWith(why, "no authority can be made");
  const Identity server = MakeServer(authority, names.hosts.front(), names, days, "serverAuth");
  if (!server.certificate) return FailWith(why, "no certificate can be made of these names");
  return Write(folder + "/ca", authority, why) && Write(folder + "/server", server, why);
}

bool IssueKeys(const std::string& folder, const std::string& name, quor::wire::Role role,
               const std::string& to, std::string* why, int days, const ServerNames& server) {
  if (name.empty() || name.size() > 64) return FailWith(why, "a name has 1 to 64 bytes");
  if (RoleName(role).empty()) return FailWith(why, "there is no such role");
  if (!AreNames(server)) return FailWith(why, "a name or address of the server cannot be used");
  const bool serves = !server.hosts.empty() || !server.addresses.empty();
  const Identity authority = ReadAuthority(folder, why);
  if (!authority.key || !MakeFolder(to, why)) return false;
  for (const char* file : {"/ca.crt", "/client.crt", "/client.key", "/server.crt", "/server.key"})
    if (Exists(to + file)) return FailWith(why, to + file + " exists already");
  const Identity made = MakeLeaf(authority, {name, RoleName(role), EmailOf(name, RoleName(role))},
                                 days, LeafExtensions("clientAuth"));
  // The servers of a cluster call each other, and show the one certificate that they have. As a
  // client it has no role, and so no rights.
  const Identity serving =
      serves ? MakeServer(authority, name, server, days, "serverAuth,clientAuth") : Identity();
  if (!made.certificate || (serves && !serving.certificate))
    return FailWith(why, "no certificate can be made for " + name);
  return Write(to + "/client", made, why) && (!serves || Write(to + "/server", serving, why)) &&
         WriteCertificate(to + "/ca.crt", authority.certificate.get(), why);
}

std::optional<std::string> CertificateEmail(const std::string& file, std::string* why) {
  const Certificate certificate = ReadCertificate(file, why);
  if (!certificate) return std::nullopt;
  const std::unique_ptr<GENERAL_NAMES, Freer<GENERAL_NAMES, GENERAL_NAMES_free>> names(
      static_cast<GENERAL_NAMES*>(
          X509_get_ext_d2i(certificate.get(), NID_subject_alt_name, nullptr, nullptr)));
  for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
    const GENERAL_NAME* const name = sk_GENERAL_NAME_value(names.get(), i);
    if (name->type != GEN_EMAIL) continue;
    const ASN1_IA5STRING* const text = name->d.rfc822Name;
    std::string email(reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
                      static_cast<std::size_t>(ASN1_STRING_length(text)));
    if (!email.empty() && IsPlain(email)) return email;
    return FailWith(why, file + ": its e-mail address cannot be used", std::nullopt);
  }
  return FailWith(why,
                  file +
                      ": has no e-mail address, by which servers know its owner (issue it again "
                      "with \"quord keys issue\", with a name of ASCII characters)",
                  std::nullopt);
}
