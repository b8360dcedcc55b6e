#include "usual_state.h"

#include <cstdlib>

namespace {

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

}  // namespace

std::string UsualState(const std::string& file) {
  if (const std::string given = Environment("STATE_DIRECTORY"); !given.empty())
    return given + "/" + file;
  if (const std::string home = Environment("XDG_STATE_HOME"); !home.empty())
    return home + "/quor/" + file;
  const std::string home = Environment("HOME");
  return home.empty() ? "" : home + "/.local/state/quor/" + file;
}
