#include "records/record_fields.h"

#include <cstring>

#include "base/bytes.h"
#include "base/text.h"
#include "records/raw_trace.h"

namespace {

std::uint8_t* StoreText(std::uint8_t* to, std::string_view text) {
  StoreBe16(to, static_cast<std::uint16_t>(text.size()));
  if (!text.empty()) std::memcpy(to + 2, text.data(), text.size());
  return to + 2 + text.size();
}

}  // namespace

void MakeRecord(const RecordFields& fields, std::vector<std::uint8_t>& record) {
  constexpr std::size_t kNumbersBytes = 40;
  const std::string_view text = CutUtf8(fields.text, kLongestText);
  const std::string_view stack = CutUtf8(fields.stack, kLongestText);
  record.resize(RawTrace::kFixedBytes + text.size() + stack.size());
  std::uint8_t* const to = record.data();
  StoreBe32(to, fields.count);
  StoreBe16(to + 4, fields.machine);
  StoreBe16(to + 6, fields.app);
  StoreBe16(to + 8, fields.component);
  StoreBe16(to + 10, fields.category);
  StoreBe32(to + 12, fields.date);
  StoreBe32(to + 16, fields.time);
  StoreBe64(to + 20, fields.ticCount);
  StoreBe16(to + 28, fields.pid);
  StoreBe16(to + 30, fields.tid);
  StoreBe16(to + 32, fields.attributes);
  StoreBe16(to + 34, fields.sourceFile);
  StoreBe32(to + 36, fields.sourceLine);
  StoreText(StoreText(to + kNumbersBytes, text), stack);
}
