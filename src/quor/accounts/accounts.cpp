#include "quor/accounts/accounts.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace {

constexpr std::size_t kNameBytesMax = 64, kPidBytesMax = 10;
constexpr std::size_t kBufferBytesMax = 1u << 20;

bool IsNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(),
                                      [](char byte) { return byte >= '0' && byte <= '9'; });
}

// Whatever else a directory allows would be taken for a part of the key or of the process.
bool IsPlain(std::string_view name) {
  return !name.empty() && name.size() <= kNameBytesMax && !IsNumber(name) &&
         std::all_of(name.begin(), name.end(),
                     [](char byte) { return byte > ' ' && byte < 0x7F && byte != '/'; });
}

// "" if there is none.
template <class Question>
std::string Asked(Question&& ask) {
  std::vector<char> buffer(4096);
  passwd entry{};
  passwd* found = nullptr;
  int error = 0;
  while ((error = ask(&entry, buffer, &found)) == ERANGE && buffer.size() < kBufferBytesMax)
    buffer.resize(2 * buffer.size());
  return error == 0 && found ? found->pw_name : "";
}

}  // namespace

std::string Accounts::AskSystem(uid_t uid) {
  return Asked([uid](passwd* entry, std::vector<char>& buffer, passwd** found) {
    return getpwuid_r(uid, entry, buffer.data(), buffer.size(), found);
  });
}

const Account& Accounts::Of(uid_t uid) {
  const auto [known, isNew] = m_known.try_emplace(uid, Known{Account{uid}, {}});
  Known& one = known->second;
  const bool isDue = isNew || (one.askAgain && Clock::now() >= *one.askAgain);
  if (!isDue || !m_all) return one.account;
  const std::string name = m_ask(uid);
  const bool isTaken = std::any_of(m_known.begin(), m_known.end(), [&](const auto& other) {
    return other.first != uid && other.second.account.name == name;
  });
  one.account.name = IsPlain(name) && !isTaken ? name : std::to_string(uid);
  one.askAgain = name.empty() ? std::optional(Clock::now() + m_askAgain) : std::nullopt;
  return one.account;
}

bool Accounts::IsName(const std::string& name) const {
  if (!m_all) return false;
  if (IsNumber(name)) return name.size() <= 10;
  return IsPlain(name) &&
         !Asked([&name](passwd* entry, std::vector<char>& buffer, passwd** found) {
            return getpwnam_r(name.c_str(), entry, buffer.data(), buffer.size(), found);
          }).empty();
}

std::string KeyOf(const Account& account, std::string_view app) {
  return account.name.empty() ? std::string(app) : account.name + "/" + std::string(app);
}

std::string_view AccountIn(std::string_view key) {
  return key.substr(0, key.find('/'));
}

std::string_view AppIn(std::string_view key) {
  const std::size_t slash = key.find('/');
  return slash == key.npos ? std::string_view() : key.substr(slash + 1);
}

std::string PidText(std::string_view said, std::uint32_t pid, std::string_view account) {
  if (account.empty()) return std::string(said);
  const bool isNumber = IsNumber(said) && said.size() <= kPidBytesMax;
  return (isNumber ? std::string(said) : std::to_string(pid)) + " " + std::string(account);
}
