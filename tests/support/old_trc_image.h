// The bytes of a trace file of the older format, in a form that reads well in a test:
//
//   OldTrcImage().Machine(1, "web").Trace({.text = "up", .machine = 1}).WriteTo(path);
//
// It shares no code with the program, so that it cannot have the same mistake.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "support/file_image.h"

// 2026-11-21 09:41:07.123 UTC in units of 100 ns since 1601.
constexpr std::uint64_t kOldMoment = 134'397'276'671'230'000;

// The fields of one old trace, in the order of initialisers.
struct OldTraceFields {
  std::string text = {};
  std::uint32_t count = 1;
  std::uint64_t time = kOldMoment;
  unsigned component = 0;
  unsigned category = 0;
  unsigned file = 0;
  unsigned machine = 0;
  unsigned app = 0;
  unsigned severity = 0;
  unsigned attribute = 0;
  std::uint32_t line = 0;
  unsigned pid = 0;
  unsigned tid = 0;
  std::uint64_t tic = 0;
};

class OldTrcImage : public FileImage<OldTrcImage> {
 public:
  OldTrcImage() : FileImage({"Version 2.2", 12}) {}

  OldTrcImage& Machine(unsigned key, std::string_view text) { return Name(0, key, 1, text); }
  OldTrcImage& App(unsigned key, std::string_view text) { return Name(1, key, 1, text); }
  OldTrcImage& Component(unsigned key, std::string_view text) { return Name(2, key, 2, text); }
  OldTrcImage& Category(unsigned key, std::string_view text) { return Name(3, key, 2, text); }
  OldTrcImage& SourceFile(unsigned key, std::string_view text) { return Name(4, key, 2, text); }
  OldTrcImage& Trace(const OldTraceFields& trace) {
    Raw(5).Number(trace.count, 4).Number(trace.time, 8).Number(trace.component, 2);
    Number(trace.category, 2).Number(trace.file, 2).Number(trace.machine, 1).Number(trace.app, 1);
    Number(trace.severity, 1).Number(trace.attribute, 1).Number(trace.line, 4);
    Number(trace.pid, 2).Number(trace.tid, 2).Number(trace.tic, 8);
    m_bytes.append(8, '\xEE');  // never read
    return Text(trace.text);
  }
  OldTrcImage& Trace(const char* text) { return Trace(OldTraceFields{.text = text}); }
  // A little-endian number of `width` bytes.
  OldTrcImage& Number(std::uint64_t value, int width) {
    for (; width > 0; --width, value >>= 8) Raw(static_cast<int>(value & 0xFF));
    return *this;
  }

 private:
  OldTrcImage& Name(int tag, unsigned key, int keyBytes, std::string_view text) {
    return Raw(tag).Number(key, keyBytes).Text(text);
  }
  OldTrcImage& Text(std::string_view text) {
    m_bytes += text;
    return Raw(0);
  }
};
