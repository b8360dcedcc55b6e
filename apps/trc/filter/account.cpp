#include "filter/account.h"

#include <pwd.h>

#include <algorithm>
#include <charconv>
#include <set>

#include "text/visible_text.h"

namespace {

constexpr std::size_t kAccountsNamedMax = 5;

}  // namespace

std::string AccountOf(const std::string& nameOrNumber) {
  uid_t number = 0;
  const char* const end = nameOrNumber.data() + nameOrNumber.size();
  const auto [rest, fault] = std::from_chars(nameOrNumber.data(), end, number);
  if (fault != std::errc() || rest != end) return nameOrNumber;
  const passwd* const entry = getpwuid(number);
  return entry ? entry->pw_name : nameOrNumber;
}

std::string NoSuchAccount(const char* what, const std::string& account,
                          const std::vector<std::string>& known) {
  std::set<std::string> names(known.begin(), known.end());
  names.erase("");
  std::string text =
      std::string("no ") + what + " is of the account \"" + VisibleText(account) + "\"; ";
  if (names.empty()) return text + "none names one, as with a service that is for one account";
  text += "there is ";
  std::size_t left = std::min(names.size(), kAccountsNamedMax);
  for (const std::string& name : names) {
    text += "\"" + VisibleText(name) + "\"";
    if (--left == 0) break;
    text += ", ";
  }
  return text + (names.size() > kAccountsNamedMax ? ", ..." : "");
}
