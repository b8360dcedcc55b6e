#include "records/record_fields.h"

#include "base/text.h"

void MakeRecord(RecordFields fields, std::vector<std::uint8_t>& record) {
  fields.text = CutUtf8(fields.text, kLongestText);
  fields.stack = CutUtf8(fields.stack, kLongestText);
  record.resize(RawTrace::kFixedBytes + fields.text.size() + fields.stack.size());
  StoreRecord(record.data(), fields);
}
