#include "engine_keys.h"

#include <unistd.h>

#include "base/fail_with.h"
#include "quor/protocol/tls.h"

namespace {

bool IsThere(const std::string& file) {
  return access(file.c_str(), R_OK) == 0;
}

}  // namespace

std::optional<NatsAddress> EngineAt(const RelayAddress& address, std::string* why) {
  NatsAddress at;
  at.servers = address.ServerTexts();
  at.name = "quor-bridge";
  if (!address.tls) return at;
  const std::string folder = KeysFolder();
  at.authority = folder + "/ca.crt";
  at.certificate = folder + "/client.crt";
  at.key = folder + "/client.key";
  for (const std::string& file : {at.authority, at.certificate, at.key})
    if (!IsThere(file))
      return FailWith(why,
                      file +
                          " cannot be read: servers of other machines are reached with a "
                          "certificate of \"quord keys issue\"",
                      std::nullopt);
  return at;
}
