#include "config/tcf/tcf_file.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "base/fail_with.h"

namespace {

bool IsPipe(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_fifo(path, error);
}

}  // namespace

std::ifstream OpenTcf(const std::string& path, std::string* why, TcfPipes pipes) {
  std::error_code error;
  if (pipes == TcfPipes::Refused && IsPipe(path))
    return FailWith(why, "Is a pipe", std::ifstream());
  if (std::filesystem::is_directory(path, error))
    return FailWith(why, SystemReason(EISDIR), std::ifstream());
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  return in.is_open() ? std::move(in) : FailWith(why, SystemReason(), std::ifstream());
}

std::ofstream CreateTcf(const std::string& path) {
  std::ofstream out;
  if (!IsPipe(path)) out.open(path, std::ios::trunc);
  return out;
}
