// Which applications a client sees, and under which names.
//
// Shape    A service of one account: all, under their names. A service of a machine: the catalogue
//          has ACCOUNT/NAME. A client that is restricted to its own account sees and writes NAME
//          alone and knows no others. Another client sees and writes ACCOUNT/NAME. A NAME alone is
//          good for it too while exactly one application has it.
// Errors   Nothing and a reason.
// Threads  The service's one thread.
#pragma once

#include <optional>
#include <string>

#include "quor/accounts/accounts.h"
#include "quor/catalogue/catalogue.h"

struct ViewPeer {
  std::optional<uid_t> uid;   // none: on another machine
  bool isRestricted = false;  // to its own account
};

class AppView {
 public:
  AppView(Accounts& accounts, const Catalogue& known, const ViewPeer& peer);

  // The name in the catalogue. `isNew`: it may be one that is not known yet.
  std::optional<std::string> KeyOf(const std::string& name, bool isNew, std::string* why) const;
  bool Sees(const std::string& key) const;
  // How this client writes an application that it sees.
  std::string NameOf(const std::string& key) const;
  // Whose it is; empty at a service of one account.
  std::string AccountOf(const std::string& key) const;
  // A program writes its file with its own rights. So only its account and root may name a file.
  bool MayNameFile(const std::string& key) const;

 private:
  std::optional<std::string> TheOneNamed(const std::string& name, std::string* why) const;

  Accounts& m_accounts;
  const Catalogue& m_known;
  const ViewPeer m_peer;
  const std::string m_own;  // the account of the peer; empty: it is not restricted
};
