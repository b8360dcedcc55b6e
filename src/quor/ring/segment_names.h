// The names and trace points that an application has entered into its segment, as the service reads
// them.
//
// Shape    Both grow only. A trace's names are published before the trace is committed: a reader
//          that meets an unknown id in a trace reads the new names and finds it, or the application
//          lies.
// Owner    Borrows the segment.
// Errors   False: the area contradicts itself, and is not read any further. An id is entered once,
//          so no more than 65,536 names and the area's bytes are ever handed out.
// Threads  One at a time.
#pragma once

#include <string>
#include <vector>

#include "quor/ring/segment_map.h"
#include "records/name_ids.h"

struct SegmentName {
  AppNameId id;
  std::string text;
};

class SegmentNames {
 public:
  explicit SegmentNames(const SegmentMap& segment) : m_segment(segment) {}
  // Appends the names entered since the last call.
  bool ReadNew(std::vector<SegmentName>& names);

 private:
  const SegmentMap& m_segment;
  std::uint32_t m_read = 0;
  IdSet<AppNameId> m_seen;
  bool m_broken = false;
};

struct SegmentPointNames {
  std::uint32_t point;
  AppNameId component, category;
};

class SegmentPointsReader {
 public:
  explicit SegmentPointsReader(const SegmentMap& segment) : m_segment(segment) {}
  // Appends the points registered since the last call.
  bool ReadNew(std::vector<SegmentPointNames>& points);
  // All of them are new again.
  void Rewind() { m_read = 0; }
  std::uint32_t Count() const { return m_read; }

  // REQUIRES: point < Count().
  std::uint32_t Settings(std::uint32_t point) const;
  void SetSettings(std::uint32_t point, std::uint32_t word);
  // What a point has that is registered from now on.
  void SetDefault(std::uint32_t word);
  // After a batch of changes: the application may look now. Send it a poke as well.
  void PublishSettings();

 private:
  const SegmentMap& m_segment;
  std::uint32_t m_read = 0;
};
