// The C interface: traces whose text is formatted as by printf, and blocks.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "quor/runtime/link_thread.h"
#include "quor/runtime/process/errno_keeper.h"
#include "quor/runtime/trace.h"

namespace {

// One byte more than a record takes, so that the cut is noticed there.
constexpr std::size_t kLongestFormatted = 65541;
// Never null, because it is copied.
constexpr std::string_view kNone{"", 0}, kBegin = "Begin: ", kEnd = "End: ";

// A prefix and a formatted text, in the given room or, if that is too small, in allocated memory,
// which is the caller's to free. Without memory the text is cut.
struct Formatted {
  std::string_view text;
  char* allocated = nullptr;
};

// If a format cannot be printed, the format itself is the most useful text.
Formatted FormatInto(char* room, std::size_t size, std::string_view prefix, const char* format,
                     std::va_list arguments) {
  if (!format) format = "(null)";
  std::memcpy(room, prefix.data(), prefix.size());
  va_list again;
  va_copy(again, arguments);
  char* at = room + prefix.size();
  const std::size_t left = size - prefix.size();
  int length = std::vsnprintf(at, left, format, arguments);
  const bool printed = length >= 0;
  if (!printed) length = std::snprintf(at, left, "%s", format);
  Formatted result{{room, prefix.size() + static_cast<std::size_t>(length)}};
  if (result.text.size() >= size) {
    const std::size_t longer = std::min(result.text.size(), kLongestFormatted) + 1;
    result.allocated = static_cast<char*>(std::malloc(longer));
    char* const data = result.allocated ? result.allocated : room;
    result.text = {data, (result.allocated ? longer : size) - 1};
    if (result.allocated) {
      std::memcpy(data, prefix.data(), prefix.size());
      at = data + prefix.size();
      if (printed)
        std::vsnprintf(at, longer - prefix.size(), format, again);
      else
        std::snprintf(at, longer - prefix.size(), "%s", format);
    }
  }
  va_end(again);
  return result;
}

bool IsOn(const quor_point& point, unsigned attributes) {
  return (__atomic_load_n(&point.settings, __ATOMIC_RELAXED) & attributes) == attributes;
}

void TraceFormatted(const void* caller, quor_point* point, unsigned attributes, const char* file,
                    unsigned line, const char* format, std::va_list arguments) {
  const ErrnoKeeper keeper;
  LinkThread::Get().StartIfRefused();
  char room[1024];
  const Formatted formatted = FormatInto(room, sizeof room, kNone, format, arguments);
  TraceFrom(caller, point, attributes, file, line, formatted.text);
  std::free(formatted.allocated);
}

}  // namespace

void quor_tracef(quor_point* point, unsigned attributes, const char* file, unsigned line,
                 const char* format, ...) {
  if (!IsOn(*point, attributes)) return;
  va_list arguments;
  va_start(arguments, format);
  TraceFormatted(__builtin_return_address(0), point, attributes, file, line, format, arguments);
  va_end(arguments);
}

void quor_vtracef(quor_point* point, unsigned attributes, const char* file, unsigned line,
                  const char* format, va_list arguments) {
  if (IsOn(*point, attributes))
    TraceFormatted(__builtin_return_address(0), point, attributes, file, line, format, arguments);
}

void quor_block_begin(quor_block* block, quor_point* point, unsigned attributes, const char* file,
                      unsigned line, const char* format, ...) {
  block->point = nullptr;
  if (!quor_on(point, attributes)) return;
  const ErrnoKeeper keeper;
  LinkThread::Get().StartIfRefused();
  va_list arguments;
  va_start(arguments, format);
  const Formatted formatted =
      FormatInto(block->room, sizeof block->room, kBegin, format, arguments);
  va_end(arguments);
  block->point = point;
  block->file = file;
  block->attributes = attributes;
  block->line = line;
  block->length = formatted.text.size();
  block->allocated = formatted.allocated;
  TraceFrom(__builtin_return_address(0), point, attributes, file, line, formatted.text);
}

void quor_block_end(quor_block* block) {
  if (!block->point) return;
  const ErrnoKeeper keeper;
  // "Begin: x" becomes "End: x" in place.
  const std::size_t shift = kBegin.size() - kEnd.size();
  char* const text = (block->allocated ? block->allocated : block->room) + shift;
  std::memcpy(text, kEnd.data(), kEnd.size());
  TraceFrom(__builtin_return_address(0), block->point, block->attributes, block->file, block->line,
            {text, block->length - shift});
  std::free(block->allocated);
  block->point = nullptr;
}
