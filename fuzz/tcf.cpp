// Any bytes as a .tcf file: what is read is written again and must read back the same.
#include <cstdint>
#include <cstdlib>
#include <sstream>

#include "config/tcf/tcf_lines.h"
#include "config/tcf/tcf_read.h"
#include "config/tcf/tcf_write.h"

namespace {

class Rewriter final : public TcfHandler {
 public:
  bool OnApp(const std::string& name) override { return Line(TcfAppLine(name)); }
  bool OnSink(unsigned char type, const std::string& name, const std::string& options) override {
    if (type != trc_SinkFile && type != trc_SinkSocket) std::abort();
    return Line(TcfSinkLine(static_cast<trc_SinkTypes_e>(type), name, options));
  }
  bool OnTrace(const std::string& component, const std::string& category,
               unsigned short settings) override {
    return Line(TcfTraceLine(component, category, settings));
  }
  bool Line(const std::string& line) {
    m_file += line + "\n";
    return true;
  }
  std::string m_file = std::string(kTcfHeader) + "\n";
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  Rewriter first;
  TcfFault fault;
  const TcfEnd end = ReadTcf(in, first, &fault);
  if (end == TcfEnd::Stopped || (end == TcfEnd::BadLine) == fault.why.empty()) std::abort();
  // Doubled backslashes may make a line too long.
  if (size > kLongestTcfLineBytes / 2) return 0;
  std::istringstream again(first.m_file);
  Rewriter second;
  if (ReadTcf(again, second) != TcfEnd::Whole || second.m_file != first.m_file) std::abort();
  return 0;
}
