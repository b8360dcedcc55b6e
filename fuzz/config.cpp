// Any bytes as a configuration file of the service: what is taken is good by itself, and faults are
// bounded.
#include <cstdint>
#include <cstdlib>

#include "quor/options/config_file.h"

namespace {

void Demand(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const ConfigFile file = ConfigFile::Read(text);
  Demand(file.faults.size() <= ConfigFile::kFaultsMax);
  for (const std::string& fault : file.faults) Demand(fault.size() < 9000);
  std::size_t listeners = 0;
  for (const GivenOption& option : file.options) {
    Demand(WhyNotOption(option.word, option.value).empty());
    listeners += option.word == "listen" ? 1 : 0;
  }
  ServiceSettings settings;
  settings.Take(file.options);
  Demand(settings.listen.size() == listeners);
  settings.Take(file.options);
  Demand(settings.listen.size() == listeners);
  return 0;
}
