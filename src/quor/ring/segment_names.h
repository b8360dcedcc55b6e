// Reads the names and trace points that an application has entered into its segment. Used by the
// service.
//
// Shape    Both only grow. The names of a trace are published before the trace is committed. So a
//          reader that meets an unknown id in a trace reads the new names and finds it there,
//          unless the application violates the protocol.
// Owner    Borrows the segment.
// Errors   False: the area contradicts itself, and is not read any further. An id is entered once,
//          so no more than 65,536 names and the area's bytes are ever given out.
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
  std::uint32_t settings = 0;  // as it was registered
};

class SegmentPointsReader {
 public:
  explicit SegmentPointsReader(const SegmentMap& segment) : m_segment(segment) {}
  // Appends the points registered since the last call, or only the next kAtOnce of them.
  static constexpr std::uint32_t kAtOnce = kSegmentPoints;
  bool ReadNew(std::vector<SegmentPointNames>& points);
  // The next ReadNew gives all points again.
  void Rewind() { m_read = 0; }
  std::uint32_t Count() const { return m_read; }

  // REQUIRES: point < Count().
  std::uint32_t Settings(std::uint32_t point) const;
  // The application looks at what has changed when a Poke tells it to.
  void SetSettings(std::uint32_t point, std::uint32_t settings);
  // The settings of points that are registered from now on.
  void SetDefault(std::uint32_t settings);

 private:
  const SegmentMap& m_segment;
  std::uint32_t m_read = 0;
};
