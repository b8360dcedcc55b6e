// A segment in this process: made by the application, or opened by the service from a descriptor.
//
// Shape    Layout() is this process's own copy of the header's numbers, checked once.
// Owner    Holds the descriptor and the mapping until its end.
// Errors   False and a reason. A segment that does not lie in memory, is too short, or has numbers
//          that contradict each other is refused. Another process may cut the file of an opened one
//          at any time: who reads it guards the memory (base/fault_guard.h). Open reads none of it.
// Threads  Create, Open and destruction: one. The memory itself: see segment.h.
#pragma once

#include <cstdint>
#include <string>

#include "quor/ring/backed_memory.h"
#include "quor/ring/known_descriptor.h"
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
  AppNameId appName{}, pidName{}, machineName{};
};

// What is left of a segment that a service has taken to its end.
struct SegmentRest {
  std::uint32_t pid = 0, moves = 0;
  std::uint64_t startedNs = 0, served = 0, servedElsewhere = 0;
  SegmentEnd end = SegmentEnd::None;
  std::string handedTo;
  std::uint64_t handedOn = 0;
};
// False: it is not one.
bool ReadRest(int file, SegmentRest* rest);
// Of a segment's file that was opened anew: no process has it as its own any more.
bool IsUnowned(int file);

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

  // A new, empty segment of this process in `file`, which it takes, or in memory that has no name
  // (-1). `salt` must be hard to guess.
  bool Create(const SegmentSizes& sizes, std::uint64_t startedNs, std::uint64_t salt,
              int file = -1);
  // Takes the descriptor, also when it refuses it. The ids of names in the header are read anew by
  // RefreshNames, because the application may enter them after the segment was made.
  bool Open(int descriptor, const char** why);
  void RefreshNames();
  // Of an opened one: no process has it as its own any more.
  bool OwnerIsGone() const;
  // In the child of a fork, whose interrupted code may still write to it: private memory takes its
  // place, with the points and names, so that the child does not pass for the owner.
  void Detach(std::size_t points, std::size_t nameBytes);
  // Forgets it and leaves the memory where it is.
  void Abandon();
  // Of one whose owner has gone: all was taken, and only the count of it is kept.
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
  // What of them may be written to; of the maker alone.
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

  KnownDescriptor m_descriptor;
  std::uint64_t m_bytes = 0;
  SegmentHeader* m_header = nullptr;
  SegmentLayout m_layout;
};
