// Any bytes as the text of settings and of a sink: what is read is written again and must read back
// the same.
#include <cstdint>
#include <cstdlib>

#include "quor/settings/settings_text.h"
#include "quor/settings/written_sink.h"

namespace {

void Expect(bool holds) {
  if (!holds) std::abort();
}

void ReadSettings(std::string_view text) {
  std::vector<std::string> faults;
  const SettingsText read = SettingsText::Read(text, &faults);
  const std::string written = read.Written();
  std::vector<std::string> none;
  const SettingsText again = SettingsText::Read(written, &none);
  Expect(none.empty() && again.Written() == written);
  Expect(read.Rules().size() <= SettingsText::kRulesMax && (read.AnySettings() & ~0x31Fu) == 0);
  for (const SettingsText::Rule& rule : read.Rules()) {
    Expect(read.Of(rule.traces, "x").has_value());
    const std::string_view whole(rule.traces);
    const std::size_t slash = whole.find('/');
    if (slash == std::string_view::npos) continue;
    Expect(read.Of(whole.substr(0, slash), whole.substr(slash + 1)).has_value());
  }
  SettingsText sum = read;
  sum.Add(again);
  Expect(sum.Written() == written);
}

void ReadSink(std::string_view text) {
  std::string why;
  const auto sink = WrittenSink::Read(text, &why);
  Expect(sink ? !sink->name.empty() : !why.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  ReadSettings(text);
  ReadSink(text);
  return 0;
}
