#include "input/merge_traces.h"

#include <queue>

#include "base/fail_with.h"
#include "input/merged_names.h"
#include "records/record_layout.h"

namespace {

constexpr std::uint64_t kTracesPerLookOfMerge = 4096;

struct Stream {
  std::uint64_t time, start;  // of the next trace, and of the first one
  std::size_t document, at;

  bool operator<(const Stream& other) const {  // for a queue whose top is the largest
    if (time != other.time) return time > other.time;
    if (start != other.start) return start > other.start;
    return document > other.document;
  }
};

std::uint64_t TimeOf(const TraceEvent_i& trace) {
  return std::uint64_t{trace.GetDate()} << 32 | trace.GetTime();
}

// Copies records, and gives them the ids of the merged names.
class Merger {
 public:
  Merger(const std::vector<const CTraceDoc*>& documents, TrcWriter& writer)
      : m_documents(documents), m_writer(writer) {}

  bool Write(const Stream& from, std::string* why) {
    const CTraceDoc& document = *m_documents[from.document];
    // The lengths are read once: the file of a mapped record may change at any moment.
    const std::uint8_t* const record = document.m_traces[from.at]->Record();
    const std::size_t textLength = RawTrace(record).TextLength();
    m_record.assign(record, record + TraceAt::kText + textLength + kTextLengthBytes);
    const std::size_t stackLength = LoadBe16(m_record.data() + TraceAt::kText + textLength);
    StoreBe16(m_record.data() + TraceAt::kTextLength, static_cast<std::uint16_t>(textLength));
    const std::uint8_t* const stack = record + m_record.size();
    m_record.insert(m_record.end(), stack, stack + stackLength);
    if (!TranslateIds(m_names, from.document, document.m_names, m_record.data()))
      return FailWith(why, kTooManyNames);
    return m_writer.Write(_TraceEvent_t(m_record.data()), m_names.Names()) ||
           FailWith(why, m_writer.Why());
  }

 private:
  const std::vector<const CTraceDoc*>& m_documents;
  TrcWriter& m_writer;
  MergedNames m_names;
  std::vector<std::uint8_t> m_record;
};

}  // namespace

bool MergeTraces(const std::vector<const CTraceDoc*>& documents, TrcWriter& writer,
                 const std::function<bool(std::uint64_t)>& look, std::string* why) {
  std::priority_queue<Stream> streams;
  for (std::size_t i = 0; i < documents.size(); ++i) {
    if (documents[i]->m_traces.empty()) continue;
    const std::uint64_t time = TimeOf(*documents[i]->m_traces.front());
    streams.push({time, time, i, 0});
  }
  Merger merger(documents, writer);
  std::uint64_t written = 0;
  while (!streams.empty()) {
    Stream next = streams.top();
    streams.pop();
    if (!merger.Write(next, why)) return false;
    if (++written % kTracesPerLookOfMerge == 0 && !look(written)) return true;
    const TraceList_t& traces = documents[next.document]->m_traces;
    if (++next.at == traces.size()) continue;
    // Where its time goes back, the next trace is before those of all others, so it follows at
    // once.
    next.time = TimeOf(*traces[next.at]);
    streams.push(next);
  }
  return true;
}
