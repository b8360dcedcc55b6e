#include "input/merge_traces.h"

#include <algorithm>
#include <queue>
#include <unordered_map>

#include "base/fail_with.h"
#include "records/record_layout.h"

namespace {

constexpr std::uint64_t kTracesPerLookOfMerge = 4096;

// Name ids of all documents as ids of one, by their texts.
class MergedNames {
 public:
  NameMap& Names() { return m_names; }
  // False: there are no ids left. Ids without a name are the same in all
  // documents: the files of one program have the same ids.
  bool Translate(std::size_t document, const NameMap& names, NameId id, NameId& to) {
    if (m_known.size() <= document) m_known.resize(document + 1);
    std::vector<std::int32_t>& known = m_known[document];
    if (known.empty()) known.resize(kNameIds, kNew);
    if (known[id] == kNew) {
      const auto entry = names.find(id);
      const auto fresh = static_cast<std::int32_t>(m_next);
      if (entry == names.end()) {
        known[id] = m_nameless.try_emplace(id, fresh).first->second;
      } else {
        known[id] = m_byText.try_emplace(entry->second.name, fresh).first->second;
      }
      if (known[id] == fresh) {
        if (m_next == kNameIds) return false;
        if (entry != names.end()) m_names[static_cast<NameId>(m_next)].name = entry->second.name;
        ++m_next;
      }
    }
    to = static_cast<NameId>(known[id]);
    return true;
  }

 private:
  static constexpr std::int32_t kNew = -1;
  NameMap m_names;
  std::unordered_map<std::string, std::int32_t> m_byText;
  std::unordered_map<NameId, std::int32_t> m_nameless;
  std::vector<std::vector<std::int32_t>> m_known;  // by document and id
  std::size_t m_next = 0;
};

struct Stream {
  std::uint64_t time, start;  // the latest time so far, and that of the first trace
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
    for (const std::size_t at : kTraceIds) {
      NameId id = LoadId<NameId>(m_record.data() + at);
      if (!m_names.Translate(from.document, document.m_names, id, id))
        return FailWith(why, "together the files have more than 65,536 names");
      StoreBe16(m_record.data() + at, static_cast<std::uint16_t>(id));
    }
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
    next.time = std::max(next.time, TimeOf(*traces[next.at]));
    streams.push(next);
  }
  return true;
}
