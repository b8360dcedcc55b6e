// The memory that a traced application shares with the service: its trace map with live settings,
// its names, and the ring of its traces.
//
// Shape    One file in memory (see segment_folder.h). Both programs run on one machine, so the
//          header's numbers are native. Names and traces have the .trc form (big-endian).
//
//            +--------+----------------+----------------+----------------------------------+
//            | header | SegmentPoint[] | names          | ring, units of 8 bytes           |
//            +--------+----------------+----------------+----------------------------------+
//                     ^ pointsOffset   ^ namesOffset    ^ ringOffset
//
//            ring:     free | trace | trace | trace | trace | being written | free
//                           ^ consumed                                      ^ reserved
//
// Owner    The application makes the file, and the service finds it there, also when the
//          application was killed. The application's mapping holds an exclusive flock on the file.
//          The kernel releases it at the application's end or exec, and not before: so its death is
//          known.
// Errors   The service trusts nothing here: it checks every number once, on its own copy.
// Threads  Many producers (any thread of the application), one consumer: the service, or the
//          application itself while its sink is a file.
//
// A producer reserves space by moving `reserved`, writes the record, and commits it by storing its
// first word: the record's position and size, mixed with the segment's salt. A stale word of an
// earlier lap has another position, and the bytes of a text cannot guess the salt. So no memory
// needs to be cleared, and the consumer stops at a record that is not committed yet. When the ring
// is full the newest trace is dropped. `dropped` counts all drops, `pendingDrops` those since the
// last record. The next record takes these along, so that the loss is shown where it happened.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "quor/ring/ring_words.h"
#include "records/name_ids.h"

constexpr char kSegmentMagic[8] = {'Q', 'U', 'O', 'R', 'S', 'E', 'G', '1'};
constexpr std::uint32_t kSegmentVersion = 3;
constexpr std::uint32_t kSegmentPoints = 16384;
constexpr std::uint32_t kSegmentNameBytes = 4u << 20;
constexpr std::uint32_t kSegmentRingBytes = 8u << 20;  // a power of two
constexpr std::uint32_t kRingUnitBytes = 8;

// In the settings of a point: they come from the application's environment, and the service leaves
// them as they are until somebody sets others.
constexpr std::uint32_t kStartSettings = 0x80000000;

struct SegmentPoint {
  std::atomic<std::uint32_t> settings;  // written by the service
  AppNameId component, category;
};
static_assert(sizeof(SegmentPoint) == 8);

// Who takes the traces out of the ring.
enum class RingTaker : std::uint8_t { Application = 0, Service = 1 };

constexpr std::size_t kForwardTargetBytes = 264;  // a host's name, a port, and a NUL

// Who may take traces when no link orders it: see ring_claim.h.
enum class RingClaim : std::uint32_t { None = 0, Application = 1, Service = 2 };

enum class SegmentEnd : std::uint32_t { None = 0, Here = 1, Elsewhere = 2 };

struct SegmentHeader {
  char magic[8];
  std::uint32_t version, pointCapacity, nameBytes, ringBytes;
  std::uint32_t pointsOffset, namesOffset, ringOffset, pid;
  std::uint64_t startedNs;  // CLOCK_REALTIME at the start, tells instances of a pid apart
  std::uint64_t salt;       // highest bit set: fresh memory never reads as committed
  AppNameId appName, pidName, machineName;
  AppNameId startNotes;  // what the environment gave, in lines; 0: nothing
  // Published with release after the entry is written; read with acquire.
  alignas(64) std::atomic<std::uint32_t> pointCount;
  std::atomic<std::uint32_t> nameBytesUsed;         // names are tag-10 bodies: id, length, text
  std::uint32_t unused;                             // older services count in it; not read
  std::atomic<std::uint32_t> defaultSettings;       // of points that are registered from now on
  alignas(64) std::atomic<std::uint64_t> reserved;  // mark after everything ever reserved
  std::atomic<std::uint64_t> consumedSeen;          // the producers' copy of `consumed`
  alignas(64) std::atomic<std::uint64_t> consumed;  // mark after everything ever consumed
  std::atomic<std::uint64_t> consumedTraces;        // the same count, 64 bits wide
  std::atomic<std::uint64_t> reportedDrops;         // of `dropped`, reported as of that moment
  alignas(64) std::atomic<std::uint64_t> dropped;   // traces ever dropped
  std::atomic<std::uint64_t> pendingDrops;
  std::atomic<std::uint64_t> sinkLost;       // taken by the application's file sink, not written
  std::atomic<std::uint32_t> consumerWaits;  // not 0: signal after a commit
  // Signalled for the application's link thread: by its other threads, and by the service after it
  // has sent something over the link or when the link is to be made again.
  alignas(64) std::atomic<std::uint32_t> wakeEvent;
  std::atomic<std::uint32_t> consumerCalled;  // it was signalled because the consumer waits
  // How many traces the service took or knows as lost. It is kept here to survive the service.
  std::atomic<std::uint64_t> served;
  // How many of these went to another machine's monitors before, and how often that has changed.
  std::atomic<std::uint64_t> servedElsewhere;
  std::atomic<std::uint32_t> moves;
  std::atomic<std::uint64_t> sinkUnreported;  // losses of the file sink that `served` lacks
  // Not None: the service has taken all traces, for its own monitors or for another machine's. The
  // file is kept for a while, cut to its first page. If the service is killed before its monitors
  // have everything, its successor finds the count here.
  std::atomic<SegmentEnd> finished;
  // The machine whose monitors get the traces, NUL-terminated; empty: those of this service.
  // `forwarded` of the `served` traces have arrived there, or went to another machine before.
  char forwardTarget[kForwardTargetBytes];
  std::atomic<std::uint64_t> forwarded;
  std::atomic<RingClaim> claim;
  // The name of the sink that the environment gave, as it is written there; 0: none, or somebody
  // has set another.
  std::atomic<std::uint32_t> startSink;
  std::atomic<std::uint32_t> takesRules;  // the link may bring kept rules; 0 in older applications
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

// The header of every record of the ring.
struct RingRecord {
  std::atomic<std::uint64_t> word;  // RingWord ^ salt: committed
  std::uint32_t drops;              // traces dropped just before this one
  std::uint32_t recordBytes;        // of the raw trace after this header
};
static_assert(sizeof(RingRecord) == 16);
