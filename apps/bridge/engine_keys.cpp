#include "engine_keys.h"

#include <unistd.h>

#include "base/fail_with.h"
#include "quor/envelope/envelope.h"
#include "quor/protocol/keys.h"
#include "quor/protocol/tls.h"

namespace {

bool IsThere(const std::string& file) {
  return access(file.c_str(), R_OK) == 0;
}

}  // namespace

bool UseKeys(const std::string& folder, NatsAddress& at, std::string* why) {
  at.authority = folder + "/ca.crt";
  at.certificate = folder + "/client.crt";
  at.key = folder + "/client.key";
  for (const std::string& file : {at.authority, at.certificate, at.key})
    if (!IsThere(file))
      return FailWith(why, file +
                               " cannot be read: servers of other machines are reached with a "
                               "certificate of \"quord keys issue\"");
  const auto email = CertificateEmail(at.certificate, why);
  if (!email) return false;
  at.inbox = UserInbox(*email);
  return true;
}

std::optional<NatsAddress> EngineAt(const RelayAddress& address, std::string* why) {
  NatsAddress at;
  at.servers = address.ServerTexts();
  at.name = "quor-bridge";
  if (!address.tls) return at;
  if (!UseKeys(KeysFolder(), at, why)) return std::nullopt;
  return at;
}
