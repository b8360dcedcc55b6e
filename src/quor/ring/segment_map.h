// A segment in this process: made by the application, or opened by the service from a descriptor.
//
// Shape    Layout() is this process's own copy of the header's numbers, checked once.
// Owner    Owns the descriptor and the mapping.
// Errors   False and a reason. A segment is refused if it is not in memory, is too short, or has
//          numbers that contradict each other. Another process may cut the file of an opened
//          segment at any time, so its readers guard the memory (base/fault_guard.h). Open reads
//          none of it.
// Threads  Create, Open and destruction: one. The memory itself: see segment.h.
#pragma once

#include <cstdint>
#include <string>

#include "quor/ring/backed_memory.h"
#include "quor/ring/checked_descriptor.h"
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
  AppNameId appName{}, pidName{}, machineName{}, startNotes{};
};

// What remains of a segment after a service has taken all its traces.
struct FinishedSegment {
  std::uint32_t pid = 0, moves = 0;
  std::uint64_t startedNs = 0, served = 0, servedElsewhere = 0;
  SegmentEnd end = SegmentEnd::None;
  std::string forwardTarget;
  std::uint64_t forwarded = 0;
};
// False: the file is not such a rest.
bool ReadFinishedSegment(int file, FinishedSegment* rest);
// For a segment's file that was opened by name: true if no owner lives any more.
bool IsUnowned(int file);

class SegmentMap {
 public:
  static constexpr std::uint32_t kRingBytesMin = 4096;
  // A full ring of the shortest traces must hold fewer than a ring_mark can count.
  static constexpr std::uint32_t kRingBytesMax = 1u << 29;
  static constexpr std::uint32_t kPointsMax = 1u << 20;
  static constexpr std::uint32_t kNameBytesMax = 256u << 20;

  SegmentMap() = default;
  ~SegmentMap();
  SegmentMap(SegmentMap&& other) noexcept;
  SegmentMap& operator=(SegmentMap&& other) noexcept;

  // Makes a new, empty segment of this process in `file`, which it takes over, or in memory without
  // a name (-1). `salt` must be hard to guess.
  bool Create(const SegmentSizes& sizes, std::uint64_t startedNs, std::uint64_t salt,
              int file = -1);
  // Takes over the descriptor, also when it refuses the segment. RefreshNames reads the name ids of
  // the header again, because the application may set them after it has made the segment. errno is
  // that of a call that failed; 0: the content is refused.
  bool Open(int descriptor, const char** why);
  void RefreshNames();
  // For an opened segment: true if no owner lives any more.
  bool OwnerIsGone() const;
  // In the child of a fork, whose interrupted code may still write to the segment: puts private
  // memory in its place, with copies of the points and names, so that the child is not taken for
  // the owner.
  void Detach(std::size_t points, std::size_t nameBytes);
  // Forgets the segment without unmapping it.
  void Abandon();
  // For a segment whose owner has ended: all traces were taken, and only their count is kept.
  void Finish(SegmentEnd end);

  explicit operator bool() const { return m_header != nullptr; }
  // -1 when the application has closed it.
  int Descriptor() const { return m_descriptor.Get(); }
  dev_t Device() const { return m_descriptor.Device(); }
  ino_t Inode() const { return m_descriptor.Inode(); }
  std::uint64_t Bytes() const { return m_bytes; }
  const SegmentLayout& Layout() const { return m_layout; }
  SegmentHeader* Header() const { return m_header; }
  SegmentPoint* Points() const;
  std::uint8_t* Names() const;
  std::uint8_t* Ring() const;
  // The writable part of each area; only for the process that made the segment.
  BackedMemory PointsMemory() const;
  BackedMemory NamesMemory() const;
  BackedMemory RingMemory() const;

 private:
  bool Map(int descriptor, std::uint64_t bytes);
  void FillHeader(const SegmentLayout& layout);
  const char* WhyNotOpen(int descriptor);
  const char* ReadHeader(int descriptor);
  void Close();
  std::uint8_t* Base() const;

  CheckedDescriptor m_descriptor;
  std::uint64_t m_bytes = 0;
  SegmentHeader* m_header = nullptr;
  SegmentLayout m_layout;
};
