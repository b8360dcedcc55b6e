#include "quor/client/stream/loss_trace.h"

#include <unistd.h>

#include <chrono>

#include "base/text.h"
#include "records/name_record.h"
#include "records/record_fields.h"

namespace {

// Appends a name record and returns its id.
HubNameId AppendName(std::vector<std::uint8_t>& body, HubNameId& last, std::string_view text) {
  last = HubNameId(IdNumber(last) + 1);
  AppendNameRecord(body, last, CutUtf8(text, kLongestText));
  return last;
}

void SetNow(RecordFieldsOf<HubNameId>& fields) {
  using namespace std::chrono;
  const auto now = floor<milliseconds>(system_clock::now());
  const auto day = floor<days>(now);
  const year_month_day date(day);
  const hh_mm_ss clock(now - day);
  fields.date = PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                         static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  fields.time = PackTime(static_cast<unsigned>(clock.hours().count()),
                         static_cast<unsigned>(clock.minutes().count()),
                         static_cast<unsigned>(clock.seconds().count()),
                         static_cast<unsigned>(clock.subseconds().count()));
}

}  // namespace

std::vector<std::uint8_t> LossTraceBody(const std::string& machine, std::uint64_t lost,
                                        const std::string& reason) {
  std::vector<std::uint8_t> body;
  HubNameId last{};
  RecordFieldsOf<HubNameId> fields;
  fields.count = kNoSequenceNumber;
  fields.machine = AppendName(body, last, machine);
  fields.component = fields.app = AppendName(body, last, "Quor");
  fields.category = AppendName(body, last, "Loss");
  fields.pid = AppendName(body, last, std::to_string(getpid()));
  fields.tid = AppendName(body, last, std::to_string(gettid()));
  fields.attributes = kAttributeWarn;
  SetNow(fields);
  // "traces" also for one: programs look for these words.
  const std::string text = std::to_string(lost) + " traces lost: " + reason;
  const std::size_t at = body.size();
  body.resize(at + kTagBytes + kTraceFixedBytes + text.size());
  body[at] = kTagTrace;
  fields.text = text;
  StoreRecord(body.data() + at + kTagBytes, fields);
  return body;
}
