// Reads a .tcf file, line by line, for somebody who takes what the lines say.
//
// Errors   A bad line ends the reading; `fault`, if it is not null, tells which it is and why. What
//          was taken before it stays taken.
// Threads  Touches only its arguments.
#pragma once

#include <cstdint>
#include <istream>
#include <string>

// False of an operation stops the reading.
class TcfHandler {
 public:
  // The first line was good; the others follow.
  virtual void OnHeader() {}
  virtual bool OnApp(const std::string& name) = 0;
  // Of the application that came last. `type` is one of trc_SinkTypes_e.
  virtual bool OnSink(unsigned char type, const std::string& name, const std::string& options) = 0;
  // A group ends: the next one's keyword was read, or the whole file.
  virtual void OnAppEnd() {}
  virtual bool OnTrace(const std::string& component, const std::string& category,
                       unsigned short settings) = 0;

 protected:
  ~TcfHandler() = default;
};

struct TcfFault {
  std::uint64_t line = 0;  // from 1
  std::string text;        // of the line, as far as it was read
  std::string why;         // for a person
};

enum class TcfEnd { Whole, BadLine, Stopped };
TcfEnd ReadTcf(std::istream& in, TcfHandler& handler, TcfFault* fault = nullptr);
