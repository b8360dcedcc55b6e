// The program or the library that an address of this process belongs to.
//
// Shape    Addresses in a module are those of its file: what `addr2line` and `objdump` take, for
//          position-independent programs and for others.
// Owner    The texts and the build id are the loader's and the module's, valid while it is loaded.
// Threads  Any, also in a signal handler: nothing is allocated, and no lock is taken where the C
//          library offers the search without one (glibc 2.35).
#pragma once

#include <cstddef>
#include <cstdint>

struct LoadedModule {
  const void* key = nullptr;   // the same for all addresses of the module
  const char* path = nullptr;  // as the loader has it: relative if it was opened so; "" the program
  std::uintptr_t bias = 0;     // what the loader added to the addresses of the file
  const std::uint8_t* buildId = nullptr;
  std::size_t buildIdBytes = 0;  // 0: it was linked without one
};

// False if the address belongs to no module, such as code that was made while the program runs.
bool FindModule(std::uintptr_t address, LoadedModule& module);
