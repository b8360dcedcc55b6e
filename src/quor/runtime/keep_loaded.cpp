#include "quor/runtime/keep_loaded.h"

#include <dlfcn.h>
#include <link.h>

#include <atomic>

#if defined(__GLIBC__) && defined(DLFO_STRUCT_HAS_EH_DBASE)
void KeepLoaded(const void* address) {
  static std::atomic<const link_map*> last{nullptr};  // mostly the module of the next point too
  dl_find_object found{};
  if (_dl_find_object(const_cast<void*>(address), &found) != 0) return;
  const link_map* const module = found.dlfo_link_map;
  if (!module || !module->l_name || module->l_name[0] == '\0') return;
  if (last.exchange(module, std::memory_order_relaxed) == module) return;
  // The module is loaded already: this only marks it, and the handle need not be closed.
  void* const handle = dlopen(module->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
  if (handle) dlclose(handle);
}
#else
void KeepLoaded(const void*) {}
#endif
