// An authority that is not `quord keys`, as an organisation has one: it names units and alternative
// names as it likes, and revokes.
#pragma once

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

struct LeafOrder {
  std::string name = "alice";
  std::vector<std::string> units = {};
  std::string altNames = "";  // "URI:quor:monitor,DNS:..."
  int days = 100;
  bool server = false;
};

class TestAuthority {
 public:
  TestAuthority() {
    m_key.reset(EVP_EC_gen("P-256"));
    m_own.reset(X509_new());
    Fill(m_own.get(), "Example CA", {}, m_key.get(), m_own.get(), 1000);
    Extend(m_own.get(), NID_basic_constraints, "critical,CA:TRUE");
    Extend(m_own.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    X509_sign(m_own.get(), m_key.get(), EVP_sha256());
  }
  // A folder of keys for a client, or for a service. Returns the certificate's number.
  long Issue(const std::string& folder, const LeafOrder& order) {
    mkdir(folder.c_str(), 0700);
    const Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
    const Certificate leaf(X509_new(), X509_free);
    Fill(leaf.get(), order.name, order.units, key.get(), m_own.get(), order.days);
    if (!order.altNames.empty()) Extend(leaf.get(), NID_subject_alt_name, order.altNames);
    X509_sign(leaf.get(), m_key.get(), EVP_sha256());
    const std::string side = folder + (order.server ? "/server" : "/client");
    Write(folder + "/ca.crt", [&](FILE* to) { return PEM_write_X509(to, m_own.get()); });
    Write(side + ".crt", [&](FILE* to) { return PEM_write_X509(to, leaf.get()); });
    Write(side + ".key", [&](FILE* to) {
      return PEM_write_PrivateKey(to, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
    chmod((side + ".key").c_str(), 0600);
    return m_number;
  }
  void Revoke(const std::string& file, const std::vector<long>& numbers, int days = 10) {
    RevokeFor(file, numbers, days * kDay);
  }
  void RevokeFor(const std::string& file, const std::vector<long>& numbers, long seconds) {
    const std::unique_ptr<X509_CRL, decltype(&X509_CRL_free)> list(X509_CRL_new(), X509_CRL_free);
    X509_CRL_set_version(list.get(), 1);
    X509_CRL_set_issuer_name(list.get(), X509_get_subject_name(m_own.get()));
    const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> time(ASN1_TIME_new(),
                                                                     ASN1_TIME_free);
    X509_gmtime_adj(time.get(), -20 * kDay);
    X509_CRL_set1_lastUpdate(list.get(), time.get());
    for (const long number : numbers) {
      X509_REVOKED* const line = X509_REVOKED_new();
      const std::unique_ptr<ASN1_INTEGER, decltype(&ASN1_INTEGER_free)> serial(ASN1_INTEGER_new(),
                                                                               ASN1_INTEGER_free);
      ASN1_INTEGER_set(serial.get(), number);
      X509_REVOKED_set_serialNumber(line, serial.get());
      X509_REVOKED_set_revocationDate(line, time.get());
      X509_CRL_add0_revoked(list.get(), line);
    }
    X509_gmtime_adj(time.get(), seconds);
    X509_CRL_set1_nextUpdate(list.get(), time.get());
    X509_CRL_sort(list.get());
    X509_CRL_sign(list.get(), m_key.get(), EVP_sha256());
    Write(file, [&](FILE* to) { return PEM_write_X509_CRL(to, list.get()); });
  }

 private:
  using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
  using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
  static constexpr long kDay = 24 * 60 * 60;

  void Fill(X509* certificate, const std::string& name, const std::vector<std::string>& units,
            EVP_PKEY* key, X509* issuer, int days) {
    X509_set_version(certificate, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++m_number);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -20 * kDay);
    X509_gmtime_adj(X509_getm_notAfter(certificate), days * kDay + 60);
    X509_NAME* const subject = X509_get_subject_name(certificate);
    for (const std::string& unit : units) AddText(subject, "OU", unit);
    AddText(subject, "CN", name);
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
    X509_set_pubkey(certificate, key);
  }
  static void AddText(X509_NAME* to, const char* field, const std::string& text) {
    X509_NAME_add_entry_by_txt(to, field, MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(text.data()),
                               static_cast<int>(text.size()), -1, 0);
  }
  static void Extend(X509* certificate, int nid, const std::string& value) {
    X509_EXTENSION* const made = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value.c_str());
    ASSERT_TRUE(made) << value;
    X509_add_ext(certificate, made, -1);
    X509_EXTENSION_free(made);
  }
  template <class Put>
  static void Write(const std::string& path, Put&& put) {
    FILE* const to = std::fopen(path.c_str(), "w");
    ASSERT_TRUE(to) << path;
    EXPECT_EQ(put(to), 1) << path;
    std::fclose(to);
  }

  Key m_key{nullptr, EVP_PKEY_free};
  Certificate m_own{nullptr, X509_free};
  long m_number = 0;
};
