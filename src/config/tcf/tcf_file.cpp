#include "config/tcf/tcf_file.h"

#include <filesystem>
#include <system_error>

namespace {

bool IsPipe(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_fifo(path, error);
}

}  // namespace

std::ifstream OpenTcf(const std::string& path) {
  std::ifstream in;
  if (!IsPipe(path)) in.open(path, std::ios::binary);
  return in;
}

std::ofstream CreateTcf(const std::string& path) {
  std::ofstream out;
  if (!IsPipe(path)) out.open(path, std::ios::trunc);
  return out;
}
