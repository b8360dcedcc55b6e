#include "import/import_parts.h"

#include <algorithm>
#include <filesystem>

#include "base/fail_with.h"
#include "records/record_fields.h"
#include "records/trc_walk.h"

namespace {

constexpr std::string_view kNulSign = "\xE2\x90\x80";  // U+2400

std::string PathOfPart(const std::string& path, std::size_t number) {
  if (number == 1) return path;
  const std::filesystem::path whole(path);
  const std::string name = whole.stem().string() + "-" + std::to_string(number);
  return whole.parent_path() / (name + whole.extension().string());
}

// A text that is missing differs from an empty one.
bool IsMissing(std::string_view text) {
  return !text.data();
}

}  // namespace

struct ImportParts::Part {
  NewFile file;
  TrcWriter writer{TrcWriter::kBlockBytes};
  NameMap names, noNames;
  std::unordered_map<std::string_view, NameId> ids;  // views of the map's own texts
  std::vector<bool> written = std::vector<bool>(kNameIds);
  std::uint64_t bytes = 0;
  std::uint32_t used = 0;  // ids
  int unnamed = -1;        // the id of missing names
  struct {                 // of the trace before, by field
    bool known = false;
    std::string name;
    NameId id = 0;
  } last[kImportNames];
};

ImportParts::ImportParts(std::uint64_t fileBytesMax) : m_fileBytesMax(fileBytesMax) {}
ImportParts::~ImportParts() = default;

bool ImportParts::Begin(const std::string& path, std::string* why) {
  m_path = path;
  return NextPart(why);
}

bool ImportParts::NextPart(std::string* why) {
  std::string reason;
  if (!WriteLast(why)) return false;
  if (!m_parts.empty() && !m_parts.back().writer.Finish())
    return FailWith(why, "Error writing to file. " + m_parts.back().writer.Why());
  const std::string path = PathOfPart(m_path, m_parts.size() + 1);
  std::error_code error;
  if (!m_parts.empty() && std::filesystem::exists(path, error))
    return FailWith(why, "it is full after " + std::to_string(m_traces) + " traces, and " + path +
                             " for the others exists already");
  Part& part = m_parts.emplace_back();
  if (!part.file.Begin(path, &reason) || !part.writer.Create(part.file.WriteTo(), &reason))
    return FailWith(why, reason);
  part.bytes = kTrcHeaderBytes;
  return part.writer.WriteHeader() || FailWith(why, "Error writing to file. " + part.writer.Why());
}

bool ImportParts::Put(const ImportedTrace& trace, std::string* why) {
  constexpr std::uint64_t kMost =
      kTagBytes + kTraceBytesMax + kImportNames * (kNameRecordBytes + kLongestText);
  if (!WriteLast(why)) return false;
  Ids ids{};
  const ImportLosses before = m_losses;
  if (m_parts.back().bytes + kMost > m_fileBytesMax || !FindIds(trace, ids)) {
    m_losses = before;
    if (!NextPart(why)) return false;
    FindIds(trace, ids);
  }
  MakeLast(trace, ids);
  return true;
}

bool ImportParts::FindIds(const ImportedTrace& trace, Ids& ids) {
  NameId* const all[kImportNames] = {&ids.machine, &ids.app, &ids.component, &ids.category,
                                     &ids.pid,     &ids.tid, &ids.sourceFile};
  for (std::size_t place = 0; place < kImportNames; ++place)
    if (!FindId(place, trace.names[place], *all[place])) return false;
  return true;
}

// False: the file has no more ids.
bool ImportParts::FindId(std::size_t place, std::string_view name, NameId& id) {
  Part& part = m_parts.back();
  if (IsMissing(name)) {
    if (part.unnamed < 0) {
      if (part.used == kNameIds) return false;
      part.unnamed = static_cast<int>(part.used++);
    }
    id = static_cast<NameId>(part.unnamed);
    return true;
  }
  auto& last = part.last[place];
  if (last.known && last.name == name) {
    id = last.id;
    return true;
  }
  const std::string_view whole = Clean(name, m_cleanName);
  const std::string_view kept = CutUtf8(whole, kLongestText);
  if (kept.size() < whole.size()) ++m_losses.cutNames;
  const auto known = part.ids.find(kept);
  if (known == part.ids.end() && part.used == kNameIds) return false;
  if (known != part.ids.end()) {
    id = known->second;
  } else {
    id = static_cast<NameId>(part.used++);
    const auto entry = part.names.emplace(id, NameEntry_t{std::string(kept), 0}).first;
    part.ids.emplace(entry->second.name, id);
    part.bytes += kNameRecordBytes + kept.size();
  }
  last.known = true;
  last.name = name;
  last.id = id;
  return true;
}

void ImportParts::MakeLast(const ImportedTrace& trace, const Ids& ids) {
  const std::string_view text = Clean(trace.text, m_cleanText);
  const std::string_view stack = Clean(trace.stack, m_cleanStack);
  m_lastIsCut = text.size() > kLongestText;
  m_losses.cutTexts += (m_lastIsCut ? 1 : 0) + (stack.size() > kLongestText ? 1 : 0);
  MakeRecord<NameId>({.count = trace.count.value_or(static_cast<std::uint32_t>(m_traces)),
                      .machine = ids.machine,
                      .app = ids.app,
                      .component = ids.component,
                      .category = ids.category,
                      .date = trace.date,
                      .time = trace.time,
                      .ticCount = trace.tic,
                      .pid = ids.pid,
                      .tid = ids.tid,
                      .attributes = trace.attributes,
                      .sourceFile = ids.sourceFile,
                      .sourceLine = trace.line,
                      .text = text,
                      .stack = stack},
                     m_record);
  ++m_traces;
}

bool ImportParts::AddLine(std::string_view line) {
  if (m_record.empty()) return false;
  const RawTrace last(m_record.data());
  const std::size_t length = last.TextLength();
  line = Clean(line, m_cleanText);
  const std::size_t room = kLongestText - length;
  const std::string_view kept = CutUtf8(line, room > 0 ? room - 1 : 0);
  if (kept.size() < line.size() || room == 0) {
    if (!m_lastIsCut) ++m_losses.cutTexts;
    m_lastIsCut = true;
  }
  if (room == 0) return true;
  const auto at =
      m_record.insert(m_record.begin() + static_cast<std::ptrdiff_t>(TraceAt::kText + length),
                      1 + kept.size(), '\n');
  std::copy(kept.begin(), kept.end(), at + 1);
  StoreBe16(m_record.data() + TraceAt::kTextLength,
            static_cast<std::uint16_t>(length + 1 + kept.size()));
  return true;
}

bool ImportParts::WriteLast(std::string* why) {
  if (m_record.empty()) return true;
  Part& part = m_parts.back();
  const RawTrace last(m_record.data());
  // Looking up seven names costs more than all the rest: done only for the first use of each.
  bool needsNames = false;
  for (const NameId id : last.Ids().All()) {
    needsNames = needsNames || !part.written[id];
    part.written[id] = true;
  }
  const _TraceEvent_t event(m_record.data());
  if (!part.writer.Write(event, needsNames ? part.names : part.noNames))
    return FailWith(why, "Error writing to file. " + part.writer.Why());
  part.bytes += kTagBytes + m_record.size();
  m_record.clear();
  return true;
}

bool ImportParts::Finish(std::string* why) {
  if (!WriteLast(why)) return false;
  if (!m_parts.back().writer.Finish())
    return FailWith(why, "Error writing to file. " + m_parts.back().writer.Why());
  // The named file comes last: when it is there, all are.
  for (auto part = m_parts.rbegin(); part != m_parts.rend(); ++part)
    if (!part->file.Finish(why)) return false;
  return true;
}

std::vector<std::string> ImportParts::Paths() const {
  std::vector<std::string> paths;
  for (std::size_t number = 1; number <= m_parts.size(); ++number)
    paths.push_back(PathOfPart(m_path, number));
  return paths;
}

// A NUL would end the text for every reader.
std::string_view ImportParts::Clean(std::string_view text, std::string& storage) {
  if (text.find('\0') == std::string_view::npos) return text;
  storage.clear();
  for (const char byte : text) {
    if (byte == '\0') ++m_losses.nulBytes;
    if (byte == '\0')
      storage += kNulSign;
    else
      storage.push_back(byte);
  }
  return storage;
}
