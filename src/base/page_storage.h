// Storage in whole pages from the kernel. A heap would keep the memory of a closed document, and
// would not use huge pages, which halve the time of filling it.
//
// Errors   std::bad_alloc.
// Threads  Any.
#pragma once

#include <cstddef>

// `bytes` zeros. For small storage, and for storage that is mostly never used.
void* NewPages(std::size_t bytes);
// Aligned to its size, and meant for huge pages. REQUIRES: `bytes` is a power of two, at least 2
// MiB.
void* NewHugePages(std::size_t bytes);
// So many bytes in whole pages.
std::size_t WholePages(std::size_t bytes);
// REQUIRES: `storage` comes from one of the two, with the same size. Its last whole pages may also
// be freed by themselves, before the rest.
void FreePages(void* storage, std::size_t bytes);
