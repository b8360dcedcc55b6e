// The state of the runtime in this process: its segment, names, points, clock and sink.
//
// Shape    One object in static storage that is never destroyed, so that it can be used by traces
//          in static constructors and destructors, and in threads that outlive main.
// Errors   Without a segment (no memory, no descriptors) every trace is counted as lost. A later
//          trace tries again, after a pause that grows to a second. The first segment reports the
//          count.
// Threads  Hot() and its members: any, also in a signal handler. The rest under Lock().
#pragma once

#include <string_view>

#include "quor/link/segment_folder.h"
#include "quor/quor.h"
#include "quor/ring/ring_producer.h"
#include "quor/runtime/owner_lock.h"
#include "quor/runtime/process/clock.h"
#include "quor/runtime/process/name_table.h"
#include "quor/runtime/process/point_table.h"
#include "quor/runtime/start_values.h"

// The state that a trace reads. Written before `generation`, and by a fork's child while it is
// alone.
struct HotState {
  alignas(64) std::atomic<std::uint32_t> generation{0};  // of the segment; 0: none yet
  std::atomic<bool> pushEach{false};  // the file sink wants each trace written at once
  std::atomic<AppNameId> app{AppNameId{0}};
  AppNameId machine{}, pid{}, unknownThread{}, quor{}, loss{};
  RingProducer ring;
  TraceClock clock;
};

class Runtime {
 public:
  static Runtime& Get();

  HotState& Hot() { return m_hot; }
  OwnerLock& Lock() { return m_lock; }

  // Makes sure that this process has a segment of its own and that its link runs. False: not
  // possible now.
  bool Start();
  void NameApplication(const char* name);
  void Declare(quor_point* point);
  // False if this thread was interrupted while it held the lock: the point stays unregistered.
  bool Register(quor_point* point);
  // Copies the settings of the segment to the points.
  void TakeSettings();
  // The rules that the service keeps for points that are registered from now on.
  void TakeKept(const std::string& rules);
  // The id of a text; unknownThread if it cannot be entered now.
  AppNameId EnterName(std::string_view text);
  // True if this process has a ring of its own. Any thread.
  bool HasRing() const { return m_hot.generation.load(std::memory_order_acquire) != 0; }
  // Counts a trace that did not even reach a ring. The first ring will report the count.
  void CountLost();
  // At the end of the process: tries once more to get a ring that reports the count.
  void ReportLost();
  void Count(quor_counts* counts);

  const SegmentMap& Segment() const { return m_segment; }
  const NameTable& Names() const { return m_names; }
  std::string_view AppName() const { return m_names.Text(m_hot.app.load()); }

  // The fork handlers. The child starts with a new segment at its next trace.
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
  void EnterStart(SegmentHeader& header, bool sinkHolds);
  void TellStart();
  void WriteOwn(unsigned severity, std::string_view text);
  void PrimeForStart();
  void RegisterDeclared();
  void RegisterLocked(quor_point* point);

  HotState m_hot;
  OwnerLock m_lock;
  SegmentMap m_segment;
  NameTable m_names;
  PointTable m_points;
  StartValues m_start;
  SettingsText m_kept;
  std::atomic<bool> m_primes{false};  // the first traces may want the call stack
  std::atomic<quor_point*> m_declared{nullptr};
  std::atomic<std::uint64_t> m_lostOutside{0};
  std::uint32_t m_lastGeneration = 0;
  char m_appName[256] = {};
  std::atomic<std::uint64_t> m_nextTryMs{0};  // after a failed start
  unsigned m_pauseMs = kTryPauseMinMs;
  bool m_heldAtFork = false;
};
