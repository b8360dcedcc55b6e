// By how much a program may be slower when it is built with a sanitizer. A limit on its processor
// time is multiplied by it.
#pragma once

#if defined(__SANITIZE_THREAD__)
constexpr int kSanitizerSlowdown = 20;
#else
constexpr int kSanitizerSlowdown = 1;
#endif
