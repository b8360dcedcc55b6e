// The bytes of a .trc file, in a form that reads well in a test:
//
//   TrcImage().Name(7, "web").Trace({.text = "up", .machine = 7}).Raw(12).WriteTo(path);
//
// It shares no code with the program's own writers, so that it cannot have the same mistake.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "records/name_map.h"
#include "records/raw_trace.h"
#include "support/file_image.h"

// The fields of one trace, in the order of initialisers.
struct TraceFields {
  std::string text = {};
  std::string stack = {};
  std::optional<std::uint32_t> count = {};  // unset: the traces of the image are numbered from 1
  NameId machine = 0;
  NameId app = 0;
  NameId component = 0;
  NameId category = 0;
  std::uint32_t date = PackDate(2026, 11, 21);
  std::uint32_t time = PackTime(9, 41, 7, 123);
  std::uint64_t tic = 0;
  NameId pid = 0;
  NameId tid = 0;
  std::uint16_t attributes = kAttributeInfo;
  NameId file = 0;
  std::uint32_t line = 0;
};

class TrcImage : public FileImage<TrcImage> {
 public:
  // The current header; another one for a test of versions.
  explicit TrcImage(std::string_view header = {"TRC Version 3.1", 16}) : FileImage(header) {}

  TrcImage& Name(NameId id, std::string_view text) {
    Raw(10).Number(id, 2).Number(text.size(), 2);
    m_bytes += text;
    return *this;
  }
  TrcImage& Trace(const TraceFields& trace) {
    Raw(11).Number(trace.count.value_or(m_traces + 1), 4);
    ++m_traces;
    Number(trace.machine, 2).Number(trace.app, 2).Number(trace.component, 2);
    Number(trace.category, 2).Number(trace.date, 4).Number(trace.time, 4).Number(trace.tic, 8);
    Number(trace.pid, 2).Number(trace.tid, 2).Number(trace.attributes, 2).Number(trace.file, 2);
    Number(trace.line, 4).Number(trace.text.size(), 2);
    m_bytes += trace.text;
    Number(trace.stack.size(), 2);
    m_bytes += trace.stack;
    return *this;
  }
  TrcImage& Trace(std::string_view text) { return Trace(TraceFields{.text = std::string(text)}); }
  TrcImage& Trace(const char* text) { return Trace(std::string_view(text)); }
  // A big-endian number of `width` bytes.
  TrcImage& Number(std::uint64_t value, int width) {
    while (width-- > 0) Raw(static_cast<int>((value >> (8 * width)) & 0xFF));
    return *this;
  }

 private:
  std::uint32_t m_traces = 0;
};
