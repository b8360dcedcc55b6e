#include "config/traces/kept_note.h"

#include "base/text.h"
#include "quor/client/trace_config.h"

namespace {

constexpr std::size_t kKeptBytes = 400, kNameBytes = 100;

std::string Shortened(const std::string& text, std::size_t bytes) {
  const std::string_view cut = CutUtf8(text, bytes);
  return std::string(cut) + (cut.size() < text.size() ? "..." : "");
}

}  // namespace

std::string KeptNote(const trace_App_i& app) {
  const std::string kept = app.GetKept();
  if (kept.empty()) return {};
  return "Kept for later starts: " + Shortened(kept, kKeptBytes) + " (\"trc forget " +
         Shortened(app.GetAppName(), kNameBytes) + "\" takes it back)";
}
