#include "records/trace_event.h"

#include <chrono>
#include <span>

#include "base/file_stream.h"
#include "base/text.h"
#include "records/record_fields.h"
#include "records/trc_walk.h"
#include "records/zone_offset.h"

namespace {

bool WriteBytes(ds_BufferedOutputStream_t& stream, const void* bytes, std::size_t size) {
  const std::size_t wanted = size;
  return stream.WriteBuf(bytes, &size) && size == wanted;
}

bool WriteName(ds_BufferedOutputStream_t& stream, NameId id, std::string_view name) {
  name = CutUtf8(name, kLongestText);
  std::uint8_t head[kNameRecordBytes] = {kTagName};
  StoreNameHead(head + kTagBytes, id, name.size());
  return WriteBytes(stream, head, sizeof head) && WriteBytes(stream, name.data(), name.size());
}

// Each length is read only once, and the output agrees with it: the file of a mapped record may
// change at any moment.
bool WriteRecord(ds_BufferedOutputStream_t& stream, const std::uint8_t* record) {
  std::uint8_t head[kTagBytes + TraceAt::kText] = {kTagTrace};
  std::memcpy(head + kTagBytes, record, TraceAt::kText);
  const std::size_t textLength = LoadBe16(head + kTagBytes + TraceAt::kTextLength);
  const std::uint8_t* const text = record + TraceAt::kText;
  std::uint8_t stackHead[kTextLengthBytes];
  std::memcpy(stackHead, text + textLength, sizeof stackHead);
  return WriteBytes(stream, head, sizeof head) && WriteBytes(stream, text, textLength) &&
         WriteBytes(stream, stackHead, sizeof stackHead) &&
         WriteBytes(stream, text + textLength + sizeof stackHead, LoadBe16(stackHead));
}

void AppendNumber(std::string& text, unsigned value, int digits) {
  char reversed[10];
  int length = 0;
  do {
    reversed[length++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value > 0);
  for (int missing = digits - length; missing > 0; --missing) text += '0';
  while (length > 0) text += reversed[--length];
}

bool IsMoment(const UnpackedDate& date, const UnpackedTime& time) {
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(date.year)),
                                        std::chrono::month(date.month), std::chrono::day(date.day));
  return date.year >= 1 && date.year <= 9999 && day.ok() && time.hour <= 23 && time.minute <= 59 &&
         time.second <= 59 && time.ms <= 999;
}

// REQUIRES: IsMoment.
void ShiftToLocal(UnpackedDate& date, UnpackedTime& time) {
  using namespace std::chrono;
  const sys_days day = year_month_day(year(static_cast<int>(date.year)), month(date.month),
                                      std::chrono::day(date.day));
  sys_seconds moment = day + hours(time.hour) + minutes(time.minute) + seconds(time.second);
  moment += seconds(ZoneOffsetSeconds(moment.time_since_epoch().count()));
  const sys_days localDay = floor<days>(moment);
  const year_month_day local(localDay);
  const hh_mm_ss clock(moment - localDay);
  date = {static_cast<unsigned>(static_cast<int>(local.year())),
          static_cast<unsigned>(local.month()), static_cast<unsigned>(local.day())};
  time = {static_cast<unsigned>(clock.hours().count()),
          static_cast<unsigned>(clock.minutes().count()),
          static_cast<unsigned>(clock.seconds().count()), time.ms};
}

}  // namespace

std::vector<std::uint8_t> RecordOf(const TraceEvent_i& event) {
  const std::string text = _MBS2UTF(event.GetText());
  const std::string stack = _MBS2UTF(event.GetStack());
  std::vector<std::uint8_t> record;
  MakeRecord<NameId>({.count = event.GetSequenceNumber(),
                      .machine = event.GetMachineId(),
                      .app = event.GetAppId(),
                      .component = event.GetComponentId(),
                      .category = event.GetCategoryId(),
                      .date = event.GetDate(),
                      .time = event.GetTime(),
                      .ticCount = event.GetTicCount(),
                      .pid = event.GetPidId(),
                      .tid = event.GetTidId(),
                      .attributes = static_cast<std::uint16_t>(event.GetAttributes()),
                      .sourceFile = event.GetSourceFileId(),
                      .sourceLine = event.GetSourceLine(),
                      .text = text,
                      .stack = stack},
                     record);
  return record;
}

std::string TraceEvent_i::GetMachineName(const NameMap& names) const {
  return NameOf(names, GetMachineId());
}
std::string TraceEvent_i::GetAppName(const NameMap& names) const {
  return NameOf(names, GetAppId());
}
std::string TraceEvent_i::GetPidName(const NameMap& names) const {
  return NameOf(names, GetPidId());
}
std::string TraceEvent_i::GetTidName(const NameMap& names) const {
  return NameOf(names, GetTidId());
}
std::string TraceEvent_i::GetComponentName(const NameMap& names) const {
  return NameOf(names, GetComponentId());
}
std::string TraceEvent_i::GetCategoryName(const NameMap& names) const {
  return NameOf(names, GetCategoryId());
}
std::string TraceEvent_i::GetSourceFileName(const NameMap& names) const {
  return NameOf(names, GetSourceFileId());
}

std::string TraceEvent_i::GetTimeString(bool local) const {
  UnpackedDate date = UnpackDate(GetDate());
  UnpackedTime time = UnpackTime(GetTime());
  if (local && IsMoment(date, time)) ShiftToLocal(date, time);
  std::string text;
  text.reserve(23);
  AppendNumber(text, date.year, 4);
  AppendNumber(text += '-', date.month, 2);
  AppendNumber(text += '-', date.day, 2);
  AppendNumber(text += ' ', time.hour, 2);
  AppendNumber(text += ':', time.minute, 2);
  AppendNumber(text += ':', time.second, 2);
  AppendNumber(text += '.', time.ms, 3);
  return text;
}

int TraceEvent_i::WriteFile(ds_BufferedOutputStream_t& stream, NameMap& names) const {
  const TraceIdsOf<NameId> ids{GetMachineId(), GetAppId(), GetComponentId(), GetCategoryId(),
                               GetPidId(),     GetTidId(), GetSourceFileId()};
  for (const NameId id : ids.All()) {
    const auto entry = names.find(id);
    if (entry == names.end() || entry->second.written) continue;
    if (!WriteName(stream, id, entry->second.name)) return 0;
    entry->second.written = 1;
  }
  if (const std::uint8_t* const record = Record()) return WriteRecord(stream, record);
  return WriteRecord(stream, RecordOf(*this).data());
}

TraceEvent_i* TraceEvent_i::Create(unsigned int count, unsigned short machineId,
                                   unsigned short appId, unsigned short componentId,
                                   unsigned short categoryId, unsigned int date, unsigned int time,
                                   const std::uint64_t& ticCount, unsigned short pidId,
                                   unsigned short tidId, unsigned int attributes,
                                   unsigned short sourceFileId, unsigned int sourceLine,
                                   const std::string& text, const std::string& stack) {
  std::vector<std::uint8_t> record;
  MakeRecord<NameId>(
      {count, machineId, appId, componentId, categoryId, date, time, ticCount, pidId, tidId,
       static_cast<std::uint16_t>(attributes), sourceFileId, sourceLine, text, stack},
      record);
  return new OwnedTraceEvent_t(std::move(record));
}

std::string AttributesToLabel(int attributes) {
  constexpr const char* kWords[] = {"Info", "Warn", "Error", "Developer", "Verbose"};
  std::string label;
  for (int bit = 0; bit < 5; ++bit) {
    if (!(attributes & (1 << bit))) continue;
    if (!label.empty()) label += ", ";
    label += kWords[bit];
  }
  return label;
}
