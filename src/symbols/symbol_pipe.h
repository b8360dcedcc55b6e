// What passes between the two processes of a symbol reader: a length of four bytes, then a text.
//
// Errors   False: the other end has ended, is too slow, or sends what nobody asked for.
// Threads  One at a time.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

inline constexpr char kSymbolWorkerOption[] = "--symbol-worker";
inline constexpr std::size_t kSymbolTextMax = std::size_t{16} << 20;

bool SendText(int socket, std::string_view text);
// `timeoutMs` < 0: waits as long as it takes. `cancelled` is asked while it waits.
bool ReceiveText(int socket, std::string& text, int timeoutMs,
                 const std::function<bool()>& cancelled = {});
