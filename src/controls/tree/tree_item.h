// An item of a tree control, for those that keep one and ask nothing of it.
#pragma once

#include <cstdint>

// The control's handle; 0: no item.
using TreeItem = std::uintptr_t;
