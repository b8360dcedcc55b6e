#include "symbols/worker/symbol_worker.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "symbols/symbol_pipe.h"
#include "symbols/worker/stack_resolver.h"

namespace {

constexpr unsigned kSecondsForAStack = 60;

void Limit(int resource, rlim_t most) {
  rlimit limit{};
  getrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
  limit.rlim_cur = std::min(limit.rlim_cur, most);
  setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

void LimitThisProcess() {
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_FSIZE, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  Limit(RLIMIT_AS, rlim_t{12} << 30);  // files are mapped
  Limit(RLIMIT_DATA, rlim_t{2} << 30);
#endif
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
}

}  // namespace

bool IsSymbolWorker(int argc, const char* const* argv) {
  return argc > 1 && std::strcmp(argv[1], kSymbolWorkerOption) == 0;
}

int RunSymbolWorker(int argc, const char* const* argv) {
  LimitThisProcess();
  StackResolver resolver(std::vector<std::string>(argv + 2, argv + argc));
  std::string stack;
  while (ReceiveText(STDIN_FILENO, stack, -1)) {
    alarm(kSecondsForAStack);
    if (!SendText(STDIN_FILENO, WriteNames(resolver.Names(stack)))) break;
    alarm(0);
  }
  return 0;
}
