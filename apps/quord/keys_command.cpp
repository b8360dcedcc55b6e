// quord keys: makes the certificates of mutual TLS.
#include <arpa/inet.h>

#include <cstdio>

#include "commands.h"
#include "quor/protocol/keys.h"
#include "quor/protocol/tls.h"

namespace {

std::string FolderOr(const std::string& given) {
  return given.empty() ? KeysFolder() : given;
}

bool IsAddress(const std::string& text) {
  unsigned char address[16];
  return inet_pton(AF_INET, text.c_str(), address) == 1 ||
         inet_pton(AF_INET6, text.c_str(), address) == 1;
}

void AddHosts(const std::vector<std::string>& hosts, ServerNames& names) {
  for (const std::string& host : hosts)
    (IsAddress(host) ? names.addresses : names.hosts).push_back(host);
}

}  // namespace

int KeysInit(const KeysInitCommand& command) {
  ServerNames names = OwnNames();
  AddHosts(command.hosts, names);
  const std::string folder = FolderOr(command.keysFolder);
  std::string why;
  if (!InitKeys(folder, names, &why, command.days == 0 ? kKeyDays : command.days)) return Fail(why);
  std::printf("%s holds the authority and this service's certificate. Keep ca.key to yourself.\n",
              folder.c_str());
  return kExitGood;
}

int KeysIssue(const KeysIssueCommand& command) {
  const std::string to = command.to.empty() ? command.name : command.to;
  ServerNames server;
  AddHosts(command.hosts, server);
  std::string why;
  if (!IssueKeys(FolderOr(command.keysFolder), command.name,
                 RoleOf(command.role).value_or(quor::wire::ROLE_NONE), to, &why,
                 command.days == 0 ? kKeyDays : command.days, server))
    return Fail(why);
  // Keys of a server are in the folder where its service looks for them, and so are its client
  // keys.
  const bool beside = command.role == "forward" && command.hosts.empty();
  std::printf("%s holds what %s needs to %s%s. Copy it to that machine's %s.\n", to.c_str(),
              command.name.c_str(), command.role.c_str(),
              command.hosts.empty() ? "" : " and to listen",
              beside ? "~/.config/quor/keys/forward" : "~/.config/quor/keys");
  return kExitGood;
}
