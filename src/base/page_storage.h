// Storage in whole pages from the kernel: a heap would keep what a closed document gives back, and
// would not lie on huge pages, which halve the time of filling it.
//
// Errors   std::bad_alloc.
// Threads  Any.
#pragma once

#include <cstddef>

// `bytes` zeros. Small storage, and that of which little may ever be touched.
void* NewPages(std::size_t bytes);
// At a multiple of its size and meant for huge pages. REQUIRES: `bytes` is a power of two, at least
// 2 MiB.
void* NewHugePages(std::size_t bytes);
// REQUIRES: from one of the two, with the same size.
void FreePages(void* storage, std::size_t bytes);
