// Makes the certificates for mutual TLS, for `quord keys`.
//
// Shape    InitKeys fills a folder (0700) with an authority (ca.crt, ca.key) and the service's own
//          certificate (server.crt, server.key). IssueKeys fills another with the files of a
//          client: ca.crt, client.crt, client.key; also server.crt and server.key for a machine
//          that is to listen too, with which it may also call others, without a role. EC P-256;
//          private keys 0600. A client's certificate also has the e-mail address NAME@ROLE.quor, by
//          which other servers know it, if the name is ASCII.
// Errors   False and a reason. No existing file is overwritten.
// Threads  Any.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quor/protocol/quor.pb.h"

constexpr int kKeyDays = 825;

struct ServerNames {
  std::vector<std::string> hosts;      // "orders1", "orders1.example.org"
  std::vector<std::string> addresses;  // "10.0.0.5", "fe80::1"
};
// This machine's host name with and without its domain, "localhost", 127.0.0.1 and ::1.
ServerNames OwnNames();

bool InitKeys(const std::string& folder, const ServerNames& names, std::string* why,
              int days = kKeyDays);
// A negative number of days makes an expired certificate. `server`: the names and addresses of the
// other machine, if its service is to listen under the same authority.
bool IssueKeys(const std::string& folder, const std::string& name, quor::wire::Role role,
               const std::string& to, std::string* why, int days = kKeyDays,
               const ServerNames& server = {});

// The e-mail address in a certificate's file, the first one if it has several; other servers know
// its owner by it. None and a reason if there is none, or if it is not one of plain characters.
std::optional<std::string> CertificateEmail(const std::string& file, std::string* why);
