// The handle of a tree control's item, for code that only stores it.
#pragma once

#include <cstdint>

// The control's handle; 0: no item.
using TreeItem = std::uintptr_t;
