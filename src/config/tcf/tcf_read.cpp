#include "config/tcf/tcf_read.h"

#include <algorithm>
#include <streambuf>

#include "config/tcf/tcf_lines.h"

namespace {

// Gives out a stream by lines, so that a reader of single characters can tell where it stands.
class LineBuffer final : public std::streambuf {
 public:
  explicit LineBuffer(std::istream& from) : m_from(from) {}

  // An empty stream has an empty first line.
  std::uint64_t Number() const { return std::max<std::uint64_t>(m_number, 1); }
  std::string Text() const { return m_line.substr(0, m_line.find_last_not_of("\r\n") + 1); }

 private:
  // A line that is longer than any good one comes in several pieces.
  int_type underflow() override {
    constexpr int_type kEnd = traits_type::eof();
    std::streambuf& source = *m_from.rdbuf();
    int_type next = source.sbumpc();
    if (next == kEnd) return kEnd;  // the last line stays, somebody may ask for it
    if (m_line.empty() || m_line.back() == '\n') ++m_number;
    m_line.clear();
    for (; next != kEnd; next = source.sbumpc()) {
      m_line.push_back(traits_type::to_char_type(next));
      if (m_line.back() == '\n' || m_line.size() > kLongestTcfLineBytes) break;
    }
    setg(m_line.data(), m_line.data(), m_line.data() + m_line.size());
    return traits_type::to_int_type(m_line.front());
  }

  std::istream& m_from;
  std::string m_line;
  std::uint64_t m_number = 0;
};

class Reading {
 public:
  Reading(std::istream& in, TcfHandler& handler)
      : m_buffer(in), m_lines(&m_buffer), m_handler(handler) {}

  TcfEnd Run(TcfFault* fault) {
    TcfEnd end = Header();
    if (end == TcfEnd::Whole) m_handler.OnHeader();
    int type = 0;
    while (end == TcfEnd::Whole && m_lines.good()) {
      if (_trc_GetCfgLineType(m_lines, &type, &m_why)) {
        end = Line(type);
      } else if (!m_lines.eof()) {
        end = TcfEnd::BadLine;
      }
    }
    if (end == TcfEnd::Whole && m_hasApp) m_handler.OnAppEnd();
    if (end == TcfEnd::BadLine && fault) *fault = {m_buffer.Number(), m_buffer.Text(), m_why};
    return end;
  }

 private:
  TcfEnd Header() {
    std::string version;
    if (!_trc_GetCfgLineVersion(m_lines, &version, &m_why)) return TcfEnd::BadLine;
    m_why = "the first line is not \"" + std::string(kTcfHeader) + "\"";
    return version == kTcfHeader ? TcfEnd::Whole : TcfEnd::BadLine;
  }

  TcfEnd Line(int type) {
    switch (type) {
      case CfgLineApp:
        return App();
      case CfgLineSink:
        return m_hasApp ? Sink() : Orphan();
      default:
        return m_hasApp ? Trace() : Orphan();
    }
  }
  TcfEnd Orphan() {
    m_why = "no APP: line stands in front of it";
    return TcfEnd::BadLine;
  }
  static TcfEnd EndOf(bool goOn) { return goOn ? TcfEnd::Whole : TcfEnd::Stopped; }

  TcfEnd App() {
    std::string name;
    if (m_hasApp) m_handler.OnAppEnd();
    if (!_trc_GetCfgLineAppName(m_lines, &name, &m_why)) return TcfEnd::BadLine;
    m_hasApp = true;
    return EndOf(m_handler.OnApp(name));
  }
  TcfEnd Sink() {
    unsigned char type = 0;
    std::string name, options;
    if (!_trc_GetCfgLineSink(m_lines, &type, &name, &options, &m_why)) return TcfEnd::BadLine;
    return EndOf(m_handler.OnSink(type, name, options));
  }
  TcfEnd Trace() {
    std::string component, category;
    unsigned short settings = 0;
    if (!_trc_GetCfgLineTrace(m_lines, &component, &category, &settings, &m_why))
      return TcfEnd::BadLine;
    return EndOf(m_handler.OnTrace(component, category, settings));
  }

  LineBuffer m_buffer;
  std::istream m_lines;
  TcfHandler& m_handler;
  bool m_hasApp = false;
  std::string m_why;
};

}  // namespace

TcfEnd ReadTcf(std::istream& in, TcfHandler& handler, TcfFault* fault) {
  return Reading(in, handler).Run(fault);
}
