#include "quor/traced/source_identity.h"

#include "base/bytes.h"

std::array<std::uint8_t, 16> InstanceOf(const std::string& machine, std::uint32_t pid,
                                        std::uint64_t startedNs, std::uint32_t moves) {
  std::uint32_t hash = 2166136261u;
  for (const char byte : machine) hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619u;
  std::array<std::uint8_t, 16> instance{};
  StoreBe32(instance.data(), hash + moves);
  StoreBe32(instance.data() + 4, pid);
  StoreBe64(instance.data() + 8, startedNs);
  return instance;
}

void PutAccount(const Account& account, std::uint32_t pid, Source& source) {
  if (account.name.empty()) return;
  source.account = account.uid;
  source.pid = PidText(source.pid, pid, account.name);
}
