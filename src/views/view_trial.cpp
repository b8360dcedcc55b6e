#include "views/view_trial.h"

#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <limits>

#include "views/stored_views.h"

namespace {

namespace fs = std::filesystem;

std::uint64_t ThisProgram() {
  return static_cast<std::uint64_t>(getpid());
}

// The number may be that of something else by now.
bool IsRunning(std::uint64_t program) {
  if (program == 0 || program > std::uint64_t{std::numeric_limits<pid_t>::max()}) return false;
  if (kill(static_cast<pid_t>(program), 0) != 0) return false;
  std::error_code error;
  const fs::path file = fs::read_symlink("/proc/" + std::to_string(program) + "/exe", error);
  return !error && file == fs::read_symlink("/proc/self/exe", error) && !error;
}

}  // namespace

void BeginViewTrial(const std::string& source) {
  std::optional<StoredView> view = ReadStoredView(source, nullptr);
  if (!view) return;
  view->onTrial = true;
  view->program = ThisProgram();
  StoreView(*view, nullptr);
}

void EndViewTrial(const std::string& source) {
  std::optional<StoredView> view = ReadStoredView(source, nullptr);
  if (!view || !view->onTrial || view->program != ThisProgram()) return;
  view->onTrial = false;
  view->program = 0;
  StoreView(*view, nullptr);
}

// This program ends its own trials.
bool HasFailedTrial(const StoredView& view) {
  return view.onTrial && (view.program == ThisProgram() || !IsRunning(view.program));
}
