// The memory that a traced application shares with the service: its trace map with live settings,
// its names, and the ring of its traces.
//
// Shape    One memfd, sealed against growing and shrinking, laid out as SegmentHeader, points, names,
//          ring, each at the offset that the header tells. Both programs run on one machine, so the
//          header's numbers are native; names and traces in it have the .trc form (big-endian).
// Owner    Made by the application and passed to the service, which holds it too: what was committed
//          is there when the application is killed.
// Errors   The service trusts nothing here: it checks every number once, on its own copy.
// Threads  Many producers (any thread of the application), one consumer (the service).
//
// The ring. A producer reserves bytes by moving `reserved`, writes the record, and commits it by
// storing its first word: the record's position and size together. A stale word of an earlier lap
// holds another position, so nothing needs to be cleared, and the consumer stops at a record that
// is not committed yet. When the ring is full the newest trace is dropped: `dropped` counts all,
// `pendingDrops` those since the last record, which the next record takes along, so that the loss
// is told where it happened.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

constexpr char kSegmentMagic[8] = {'Q', 'U', 'O', 'R', 'S', 'E', 'G', '1'};
constexpr std::uint32_t kSegmentVersion = 1;
constexpr std::uint32_t kSegmentPoints = 16384;
constexpr std::uint32_t kSegmentNameBytes = 4u << 20;
constexpr std::uint32_t kSegmentRingBytes = 8u << 20;  // a power of two
// The longest record: a fixed part and two texts of 65,535 bytes, and the ring's own header.
constexpr std::uint32_t kRingRecordBytesMax = 16 + 44 + 2 * 65535 + 8;

struct SegmentPoint {
  std::atomic<std::uint32_t> settings;  // written by the service
  std::uint16_t component, category;    // name ids of the application's own numbering
};

struct SegmentHeader {
  char magic[8];
  std::uint32_t version, pointCapacity, nameBytes, ringBytes;
  std::uint32_t pointsOffset, namesOffset, ringOffset, pid;
  std::uint64_t startedNs;      // CLOCK_REALTIME at the start, tells instances of a pid apart
  std::uint16_t appName, pidName;  // name ids
  std::uint16_t reservedBits[2];
  // Published with release after the entry is written; read with acquire.
  alignas(64) std::atomic<std::uint32_t> pointCount;
  std::atomic<std::uint32_t> nameBytesUsed;  // names are tag-10 bodies: id, length, text
  std::atomic<std::uint32_t> settingsVersion;  // the service raises it after changing settings
  alignas(64) std::atomic<std::uint64_t> reserved;      // bytes ever reserved
  alignas(64) std::atomic<std::uint64_t> consumed;      // bytes ever consumed
  std::atomic<std::uint64_t> consumedTraces;            // traces ever consumed
  alignas(64) std::atomic<std::uint64_t> dropped;       // traces ever dropped
  std::atomic<std::uint64_t> pendingDrops;
  std::atomic<std::uint32_t> consumerWaits;  // not 0: write the event descriptor after a commit
};

// In front of every record of the ring; records begin at multiples of 8 bytes.
struct RingRecord {
  static constexpr std::uint32_t kPadding = 0xFFFFFFFF;  // drops: this record only fills the lap
  std::atomic<std::uint64_t> word;  // (position << 20) | total bytes: committed
  std::uint32_t drops;              // traces dropped just before this one
  std::uint32_t recordBytes;        // of the raw trace behind this header
};
