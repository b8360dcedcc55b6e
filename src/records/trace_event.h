// One trace, and the forms in which a program holds it.
//
// Owner    An event has one owner, who destroys it with Release. Everyone else borrows it.
// Errors   Accessors report nothing. A name id that is not in the map gives an empty name.
// Threads  An event never changes: any thread may read it. WriteFile changes the marks of the map.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/name_map.h"
#include "records/raw_trace.h"

class ds_BufferedOutputStream_t;

class TraceEvent_i {
 public:
  // The order of the virtual operations is an interface: the tracing library's events share the
  // table. It is not the order of the record.
  virtual ~TraceEvent_i() = default;
  virtual void Release() = 0;
  virtual std::uint32_t GetSequenceNumber() const = 0;
  virtual std::uint32_t GetDate() const = 0;
  virtual std::uint32_t GetTime() const = 0;
  virtual std::string GetText() const = 0;  // multibyte, up to its first NUL
  virtual NameId GetComponentId() const = 0;
  virtual NameId GetCategoryId() const = 0;
  virtual NameId GetMachineId() const = 0;
  virtual NameId GetAppId() const = 0;
  virtual NameId GetSourceFileId() const = 0;
  virtual NameId GetPidId() const = 0;
  virtual NameId GetTidId() const = 0;
  virtual int GetAttributes() const = 0;
  virtual std::uint64_t GetTicCount() const = 0;
  virtual std::uint32_t GetSourceLine() const = 0;
  virtual std::string GetStack() const = 0;  // multibyte, up to its first NUL
  // Not in the interface's table: the event's record, or null if it has none. Walks over millions
  // of traces (filter, find) read the record instead of making a virtual call per field.
  virtual const std::uint8_t* Record() const { return nullptr; }

  std::string GetMachineName(const NameMap& names) const;
  std::string GetAppName(const NameMap& names) const;
  std::string GetPidName(const NameMap& names) const;
  std::string GetTidName(const NameMap& names) const;
  std::string GetComponentName(const NameMap& names) const;
  std::string GetCategoryName(const NameMap& names) const;
  std::string GetSourceFileName(const NameMap& names) const;
  // "2026-11-21 09:41:07.123", 23 characters; local: by the zone's rules at that date. Fields that
  // hold no date or time are printed unconverted.
  std::string GetTimeString(bool local) const;
  // Writes the trace, and before it the names that the output lacks, and marks these. Not 0:
  // success.
  int WriteFile(ds_BufferedOutputStream_t& stream, NameMap& names) const;
  // An event with a record of its own. Attributes are cut to 16 bits, texts to 65,535 bytes at the
  // boundary of a character.
  static TraceEvent_i* Create(unsigned int count, unsigned short machineId, unsigned short appId,
                              unsigned short componentId, unsigned short categoryId,
                              unsigned int date, unsigned int time, const std::uint64_t& ticCount,
                              unsigned short pidId, unsigned short tidId, unsigned int attributes,
                              unsigned short sourceFileId, unsigned int sourceLine,
                              const std::string& text, const std::string& stack);
};

// Disposes of an event; null is nothing.
inline void ReleaseTrace(TraceEvent_i* event) {
  if (event) event->Release();
}

// A trace over a record that it does not own: one pointer. The bytes must outlive it.
class _TraceEvent_t : public TraceEvent_i {
 public:
  explicit _TraceEvent_t(const std::uint8_t* record) : m_record(record) {}

  void Release() override { delete this; }
  std::uint32_t GetSequenceNumber() const override { return Raw().SequenceNumber(); }
  std::uint32_t GetDate() const override { return Raw().Date(); }
  std::uint32_t GetTime() const override { return Raw().Time(); }
  std::string GetText() const override { return std::string(Raw().Text()); }
  NameId GetComponentId() const override { return Raw().ComponentId(); }
  NameId GetCategoryId() const override { return Raw().CategoryId(); }
  NameId GetMachineId() const override { return Raw().MachineId(); }
  NameId GetAppId() const override { return Raw().AppId(); }
  NameId GetSourceFileId() const override { return Raw().SourceFileId(); }
  NameId GetPidId() const override { return Raw().PidId(); }
  NameId GetTidId() const override { return Raw().TidId(); }
  int GetAttributes() const override { return Raw().Attributes(); }
  std::uint64_t GetTicCount() const override { return Raw().TicCount(); }
  std::uint32_t GetSourceLine() const override { return Raw().SourceLine(); }
  std::string GetStack() const override { return std::string(Raw().Stack()); }
  const std::uint8_t* Record() const override { return m_record; }

 protected:
  RawTrace Raw() const { return RawTrace(m_record); }

 private:
  const std::uint8_t* m_record;
};

// A trace that lives in a block of its document's list (records/trace_list.h), which owns its
// storage: releasing it frees nothing.
class PlacedTraceEvent_t final : public _TraceEvent_t {
 public:
  using _TraceEvent_t::_TraceEvent_t;
  void Release() override {}
};

// A trace with a record of its own: what Create and a live connection make.
class OwnedTraceEvent_t final : public _TraceEvent_t {
 public:
  // REQUIRES: `record` is one whole record.
  explicit OwnedTraceEvent_t(std::vector<std::uint8_t> record)
      : _TraceEvent_t(record.data()), m_bytes(std::move(record)) {}

 private:
  std::vector<std::uint8_t> m_bytes;  // a moved vector keeps its buffer
};

// "Info, Developer": the words of the five known bits that are set, lowest first; "" for none.
std::string AttributesToLabel(int attributes);
