// The state of the runtime in this process: its segment, names, points, clock and sink.
//
// Shape    One object in static storage that is never destroyed, so that traces in static
//          constructors and destructors, and in threads that outlive main, find it whole.
// Errors   Without a segment (no memory, no descriptors) every trace is counted as lost. A later
//          one tries again, after a pause that grows to a second; the segment that comes then tells
//          the count.
// Threads  Hot() and what it holds: any, also in a signal handler. The rest under Lock().
#pragma once

#include <string_view>

#include "quor/quor.h"
#include "quor/ring/ring_producer.h"
#include "quor/ring/segment_folder.h"
#include "quor/runtime/clock.h"
#include "quor/runtime/name_table.h"
#include "quor/runtime/owner_lock.h"
#include "quor/runtime/point_table.h"

constexpr std::uint32_t kSettingsMask = 0x031F;  // the seven bits that a point knows
constexpr std::uint32_t kSupport = 7;            // until the service has told its settings

// What a trace reads. Written before `generation` is, and by a fork's child while it is alone.
struct HotState {
  alignas(64) std::atomic<std::uint32_t> generation{0};  // of the segment; 0: none yet
  std::atomic<bool> pushEach{false};  // the file sink wants each trace written at once
  std::atomic<AppNameId> app{AppNameId{0}};
  AppNameId machine{}, pid{}, unknownThread{};
  RingProducer ring;
  TraceClock clock;
};

class Runtime {
 public:
  static Runtime& Get();

  HotState& Hot() { return m_hot; }
  OwnerLock& Lock() { return m_lock; }

  // Makes sure that there is a segment of this very process and that its link runs. False when
  // there can be none now.
  bool Start();
  void NameApplication(const char* name);
  void Declare(quor_point* point);
  // False when this thread was interrupted while it held the lock: the point stays unregistered.
  bool Register(quor_point* point);
  // Lets the points have the settings that stand in the segment.
  void TakeSettings();
  // The id of a text; unknownThread's when it cannot be entered now.
  AppNameId EnterName(std::string_view text);
  // There is a ring that this very process traces into. Any thread.
  bool HasRing() const { return m_hot.generation.load(std::memory_order_acquire) != 0; }
  // A trace that could not even reach a ring; the first one that there is tells of it.
  void CountLost();
  // At the end of the process: a last try for a ring that tells of it.
  void TellLost();
  void Count(quor_counts* counts);

  const SegmentMap& Segment() const { return m_segment; }
  // A service finds the segment by itself.
  bool IsFound() const { return m_found; }
  const NameTable& Names() const { return m_names; }
  std::string_view AppName() const { return m_names.Text(m_hot.app.load()); }

  // The fork handlers; the child begins anew with its next trace.
  void BeforeFork();
  void AfterForkInParent();
  void AfterForkInChild();

 private:
  static constexpr unsigned kTryPauseMinMs = 4, kTryPauseMaxMs = 1000;
  bool StartLocked();
  bool MayTry() const;
  void StartSegment();
  void HandOverLost();
  bool MakeSegment(SegmentMap& segment, SegmentFolder& folder,
                   const ServiceEnvironment& environment);
  bool HasRoomForAll(const SegmentMap& segment) const;
  void FillSegment(SegmentMap& segment);
  void RegisterDeclared();
  void RegisterLocked(quor_point* point);

  HotState m_hot;
  OwnerLock m_lock;
  SegmentMap m_segment;
  NameTable m_names;
  PointTable m_points;
  std::atomic<quor_point*> m_declared{nullptr};
  std::atomic<std::uint64_t> m_lostOutside{0};
  std::uint32_t m_lastGeneration = 0;
  char m_appName[256] = {};
  std::atomic<std::uint64_t> m_nextTryMs{0};  // of a start that failed
  unsigned m_pauseMs = kTryPauseMinMs;
  bool m_found = false;
  bool m_heldAtFork = false;
};
