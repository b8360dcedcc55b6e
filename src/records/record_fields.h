// The fields of a trace that is to be written as a record: see record_layout.h.
//
// Threads  Pure.
#pragma once

#include <string_view>
#include <vector>

#include "base/text.h"
#include "records/raw_trace.h"

class TraceEvent_i;

// All fields of a record, in its order.
template <class Id>
struct RecordFieldsOf {
  std::uint32_t count = 0;
  Id machine{}, app{}, component{}, category{};
  std::uint32_t date = 0, time = 0;
  std::uint64_t ticCount = 0;
  Id pid{}, tid{};
  std::uint16_t attributes = 0;
  Id sourceFile{};
  std::uint32_t sourceLine = 0;
  std::string_view text = {}, stack = {};
};

// Replaces the ids of the record.
template <class Id>
void StoreIds(std::uint8_t* record, const TraceIdsOf<Id>& ids) {
  StoreId(record + TraceAt::kMachine, ids.machine);
  StoreId(record + TraceAt::kApp, ids.app);
  StoreId(record + TraceAt::kComponent, ids.component);
  StoreId(record + TraceAt::kCategory, ids.category);
  StoreId(record + TraceAt::kPid, ids.pid);
  StoreId(record + TraceAt::kTid, ids.tid);
  StoreId(record + TraceAt::kSourceFile, ids.sourceFile);
}

// Writes kTraceFixedBytes + text + stack bytes. REQUIRES: neither is longer than kLongestText.
template <class Id>
inline void StoreRecord(std::uint8_t* to, const RecordFieldsOf<Id>& fields) {
  const auto storeText = [](std::uint8_t* at, std::string_view text) {
    StoreBe16(at, static_cast<std::uint16_t>(text.size()));
    if (!text.empty()) std::memcpy(at + kTextLengthBytes, text.data(), text.size());
    return at + kTextLengthBytes + text.size();
  };
  StoreBe32(to + TraceAt::kCount, fields.count);
  StoreIds<Id>(to, {fields.machine, fields.app, fields.component, fields.category, fields.pid,
                    fields.tid, fields.sourceFile});
  StoreBe32(to + TraceAt::kDate, fields.date);
  StoreBe32(to + TraceAt::kTime, fields.time);
  StoreBe64(to + TraceAt::kTicCount, fields.ticCount);
  StoreBe16(to + TraceAt::kAttributes, fields.attributes);
  StoreBe32(to + TraceAt::kSourceLine, fields.sourceLine);
  storeText(storeText(to + TraceAt::kTextLength, fields.text), fields.stack);
}

// Makes `record` the record of these fields. Texts are cut to kLongestText between characters. A
// vector that is used again keeps its storage.
template <class Id>
void MakeRecord(RecordFieldsOf<Id> fields, std::vector<std::uint8_t>& record) {
  fields.text = CutUtf8(fields.text, kLongestText);
  fields.stack = CutUtf8(fields.stack, kLongestText);
  record.resize(kTraceFixedBytes + fields.text.size() + fields.stack.size());
  StoreRecord(record.data(), fields);
}

// The record that the event's operations describe.
std::vector<std::uint8_t> RecordOf(const TraceEvent_i& event);
