// Reads the segment of one application for the service: its traces, names and trace points.
//
// Shape    Between Begin and Pause the service is the taker of the ring.
// Owner    Holds the segment.
// Errors   Nothing in the segment is trusted. If it contradicts itself, or counts more traces than
//          can have been made since it exists, the application is broken: it is not read any
//          further, and the reason is reported once.
// Threads  One.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

#include "base/fault_guard.h"
#include "quor/hub/hub.h"
#include "quor/ring/ring_consumer.h"
#include "quor/ring/segment_names.h"
#include "quor/traced/app_start.h"
#include "quor/traced/source_identity.h"

class TracedApp {
 public:
  TracedApp(SegmentMap segment, std::string app, std::string machine, std::uint32_t pid,
            const Account& account = {});

  const std::string& Name() const { return m_name; }
  const SegmentMap& Segment() const { return m_segment; }
  void Rename(std::string app);
  std::uint32_t Pid() const { return m_pid; }
  const Account& Owner() const { return m_account; }

  // From now on the traces go to this hub. Ends the old source.
  void Enter(Hub& hub);
  void Leave();
  const std::shared_ptr<Source>& CurrentSource() const { return m_source; }

  void Begin();  // takes out of the ring
  void Pause();  // publishes and takes no more
  // Without a link: claims the ring for this service. False: the application has claimed it.
  bool Claim();
  void LeaveClaim();
  bool IsTaking() const { return m_consumer.has_value(); }

  enum class Step { More, Empty, Broken };
  // Takes at most `traces`, and publishes that to the ring before they are delivered. `dead`: no
  // producer lives any more; Empty is then the end, and unfinished traces are reported as lost.
  Step Drain(std::size_t traces, bool dead);
  // For a dead application, after Drain returned Empty.
  void MarkFinished();
  RingConsumer::Wait BeginWait();
  void EndWait();
  // Wakes its link thread.
  void WakeLinkThread();
  // A report of the application on its file sink; the segment has the count of losses. False: the
  // report cannot be true.
  bool Report(const std::string& text);

  // Points registered since the last call. False: broken.
  bool ReadPoints(std::vector<TracedPoint>& points);
  SegmentPointsReader& Points() { return m_points; }
  InstanceStart ReadStart() const;  // without the settings, which ReadPoints gives
  void DropStartSink();
  bool TakesRules() const;
  const char* Why() const { return m_why; }
  bool IsBroken() const { return m_broken; }
  // Reports what a broken one left in its ring, as far as it is credible, if it `isOurs` to take.
  void GiveUp(bool isOurs);

 private:
  // Called for each item: a std::string would cost two allocations a trace.
  bool Lose(std::uint64_t lost, std::string_view reason);
  bool TakeItem(const RingItem& item);
  void PrepareForwarding(const Hub& hub, Source& source) const;
  bool Finish();
  std::uint64_t MaxPossible() const;
  void ReadNames();
  void Publish();
  bool TakeSinkLosses(const std::string& text, bool always);
  Step Break(const char* why);

  SegmentMap m_segment;
  FaultGuard m_guard;
  SegmentNames m_segmentNames;
  SegmentPointsReader m_points;
  SourceNames m_names;
  std::string m_name, m_machine;
  std::uint32_t m_pid;
  const Account m_account;
  Hub* m_hub = nullptr;
  std::shared_ptr<Source> m_source;
  std::uint64_t m_servedElsewhere = 0;
  std::uint64_t m_unread = 0;  // taken out of the ring when it broke, and not reported
  std::optional<RingConsumer> m_consumer;
  bool m_waits = false, m_namesBroken = false, m_broken = false, m_finished = false;
  const char* m_why = "";
  std::chrono::nanoseconds m_ageAtStart;
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// The age of a change at that time of day. If the clock was set back since, the change is in the
// future and counts as old as the machine's uptime at most, so that no application is taken for a
// liar because of that.
std::chrono::nanoseconds AgeOfChange(std::chrono::nanoseconds changed, std::chrono::nanoseconds now,
                                     std::chrono::nanoseconds uptime);

// Whether so many traces can have been made since the file exists.
bool IsPossible(const FinishedSegment& rest, int file);

// REQUIRES: IsPossible.
// The source of an earlier service, which may not have sent all of it to its monitors: they learn
// its counts. `file`: of the segment.
std::shared_ptr<Source> Remember(const FinishedSegment& rest, const std::string& machine, int file,
                                 const Account& account, Hub& hub);

// The name that an application without a hello has, as in its segment.
std::string AppNameIn(const SegmentMap& segment);
