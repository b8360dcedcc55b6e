#include "commands/gen.h"

#include <system_error>

#include "base/file_gate.h"
#include "base/file_stream.h"
#include "base/new_file.h"
#include "records/trc_walk.h"
#include "sample/old_sample.h"
#include "sample/sample_traces.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/progress_line.h"

namespace {

constexpr std::size_t kBufferBytes = std::size_t{1} << 20;
constexpr std::uint64_t kTraceBytesMin = kTraceFixedBytes + kTagBytes;

class Generator {
 public:
  Generator(const GenOptions& options, int descriptor)
      : m_options(options), m_stream(descriptor), m_traces(options.records, options.seed) {
    m_buffer.SetStream(m_stream);
  }

  int Run() {
    if (!WriteHeader()) return WriteError();
    while (TraceEvent_i* const trace = m_traces.Next()) {
      const std::uint64_t bytes = Measure(*trace);
      const bool fits = m_bytes + bytes <= kTrcFileBytesMax - kRoomForNames;
      const bool written = fits && Write(*trace);
      trace->Release();
      if (!fits) return TooLarge();
      if (!written) return WriteError();
      m_bytes += bytes;
      if (++m_written % kTracesPerLook != 0) continue;
      m_progress.Show("Writing traces...", m_written, m_options.records);
      if (Interrupted()) break;
    }
    m_progress.Clear();
    if (!m_buffer.Close()) return WriteError();
    return Interrupted() ? Stopped() : kExitGood;
  }

 private:
  // More than the bytes of all names of a sample.
  static constexpr std::uint64_t kRoomForNames = 65536;

  bool WriteBytes(const char* bytes, std::size_t size) { return m_buffer.WriteBuf(bytes, &size); }
  bool WriteHeader() {
    return m_options.old ? WriteBytes(kOldTrcHeader, sizeof kOldTrcHeader)
                         : WriteBytes(kTrcHeader, sizeof kTrcHeader);
  }
  // Bytes of the trace in the file; in the older format including its names.
  std::uint64_t Measure(const TraceEvent_i& trace) {
    if (!m_options.old) return 1 + RawTrace(trace.Record()).Size();
    m_oldBytes = m_oldSample.Encode(trace, m_traces.Names());
    return m_oldBytes.size();
  }
  // REQUIRES: it was measured.
  bool Write(const TraceEvent_i& trace) {
    if (m_options.old) return WriteBytes(m_oldBytes.data(), m_oldBytes.size());
    return trace.WriteFile(m_buffer, m_traces.Names()) != 0;
  }
  void ReportError(const std::string& text) {
    m_progress.Clear();
    PrintError(m_options.out + ": " + text);
  }
  int WriteError() {
    m_buffer.Discard();
    const int error = m_stream.Error();
    ReportError("Error writing to file." +
                (error == 0 ? "" : " " + std::generic_category().message(error)));
    return kExitBad;
  }
  int TooLarge() {
    ReportError("a trace file is smaller than 4 GiB: it is full after " +
                std::to_string(m_written) + " traces, and not written");
    return kExitBad;
  }
  int Stopped() {
    ReportError("interrupted after " + std::to_string(m_written) + " traces, and not written");
    return kExitInterrupted;
  }

  const GenOptions& m_options;
  ds_File_t::FOStream_t m_stream;
  ds_BufferedOutputStream_t m_buffer{kBufferBytes};  // its destructor writes to m_stream
  SampleTraces m_traces;
  OldSample m_oldSample;
  std::string_view m_oldBytes;  // of the last measured trace
  ProgressLine m_progress;
  std::uint64_t m_bytes = kTrcHeaderBytes;  // of header and traces
  std::uint64_t m_written = 0;              // traces
};

}  // namespace

int RunGen(const GenOptions& options) {
  if (options.records > kTrcFileBytesMax / kTraceBytesMin) {
    PrintError(std::to_string(options.records) +
               " traces do not fit in a trace file, which is smaller than 4 GiB");
    return kExitBad;
  }
  const auto failed = [&options](const std::string& why) {
    PrintError(options.out + ": " + why);
    return kExitBad;
  };
  std::string why;
  NewFile file;
  CatchEndSignals();
  if (!file.Begin(options.out, &why)) return failed(why);
  OpenFile open = CreateForWriting(file.WriteTo(), &why);
  if (!open) return failed(why);
  const int status = Generator(options, open.Descriptor()).Run();
  const bool closed = open.Close();
  if (status != kExitGood) return status;
  if (!closed) return failed("Error writing to file.");
  return file.Finish(&why) ? kExitGood : failed(why);
}
