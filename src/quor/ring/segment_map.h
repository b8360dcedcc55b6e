// A segment in this process: made by the application, or opened by the service from a descriptor.
//
// Shape    Layout() is this process's own copy of the header's numbers, checked once.
// Owner    Holds the descriptor and the mapping until its end.
// Errors   False and a reason. A segment that is not sealed, too short, or whose numbers contradict
//          each other is refused.
// Threads  Create, Open and destruction: one. The memory itself: see segment.h.
#pragma once

#include <cstdint>

#include "quor/ring/segment.h"

struct SegmentSizes {
  std::uint32_t points = kSegmentPoints;
  std::uint32_t nameBytes = kSegmentNameBytes;
  std::uint32_t ringBytes = kSegmentRingBytes;
};

struct SegmentLayout {
  std::uint32_t pointCapacity = 0, nameBytes = 0, ringBytes = 0;
  std::uint32_t pointsOffset = 0, namesOffset = 0, ringOffset = 0, pid = 0;
  std::uint64_t startedNs = 0, salt = 0;
  std::uint16_t appName = 0, pidName = 0, machineName = 0;
};

class SegmentMap {
 public:
  static constexpr std::uint32_t kRingBytesMin = 4096;
  // So that a full ring of the shortest traces holds fewer than a ring_mark can count.
  static constexpr std::uint32_t kRingBytesMax = 1u << 29;
  static constexpr std::uint32_t kPointsMax = 1u << 20;
  static constexpr std::uint32_t kNameBytesMax = 256u << 20;

  SegmentMap() = default;
  ~SegmentMap();
  SegmentMap(SegmentMap&& other) noexcept;
  SegmentMap& operator=(SegmentMap&& other) noexcept;

  // A new, empty, sealed segment of this process. `salt` must be hard to guess.
  bool Create(const SegmentSizes& sizes, std::uint64_t startedNs, std::uint64_t salt);
  // Takes the descriptor, also when it refuses it. The ids of names in the header are read anew by
  // RefreshNames, because the application may enter them after the segment was made.
  bool Open(int descriptor, const char** why);
  void RefreshNames();
  // Gives the mapping up without unmapping it, and closes the descriptor: for the child of a fork,
  // whose interrupted code may still write to it. Private empty memory takes its place.
  void Abandon();

  explicit operator bool() const { return m_header != nullptr; }
  int Descriptor() const { return m_descriptor; }
  const SegmentLayout& Layout() const { return m_layout; }
  SegmentHeader* Header() const { return m_header; }
  SegmentPoint* Points() const;
  std::uint8_t* Names() const;
  std::uint8_t* Ring() const;

 private:
  bool Map(int descriptor, std::uint64_t bytes);
  void Close();
  std::uint8_t* Base() const;

  int m_descriptor = -1;
  std::uint64_t m_bytes = 0;
  SegmentHeader* m_header = nullptr;
  SegmentLayout m_layout;
};
