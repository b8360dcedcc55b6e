// What the service reads out of the segment of one application: its traces, names and trace points.
//
// Shape    Between Begin and Pause the service is the taker of the ring.
// Owner    Holds the segment.
// Errors   Nothing in the segment is trusted. When it contradicts itself, or counts more traces
//          than there can have been since it was made, the application is broken: nothing is read
//          any more, and the reason is told once.
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

struct TracedPoint {
  std::uint32_t point;
  std::string component, category;
};

class TracedApp {
 public:
  TracedApp(SegmentMap segment, std::string app, std::string machine, std::uint32_t pid);

  const std::string& Name() const { return m_name; }
  const SegmentMap& Segment() const { return m_segment; }
  void Rename(std::string app);
  std::uint32_t Pid() const { return m_pid; }

  // Whose stream the traces are of from now on. Ends the old source.
  void Enter(Hub& hub);
  void Leave();
  const std::shared_ptr<Source>& CurrentSource() const { return m_source; }

  void Begin();  // takes out of the ring
  void Pause();  // publishes and takes no more
  // Without a link: the ring is this service's until it leaves it. False: the application has it.
  bool Claim();
  void LeaveClaim();
  bool IsTaking() const { return m_consumer.has_value(); }

  enum class Step { More, Empty, Broken };
  // At most `traces` of them, said to the ring before they are delivered. `dead`: no producer lives
  // any more; Empty is then the end, and what was being written is told as lost.
  Step Drain(std::size_t traces, bool dead);
  // Of the dead, after Drain was Empty.
  void MarkFinished();
  RingConsumer::Wait BeginWait();
  void EndWait();
  // Wakes its link thread.
  void RingBell();
  // What the application tells of its file sink; what that lost stands in the segment. False: it
  // cannot be true.
  bool Report(const std::string& text);

  // Points registered since the last call. False: broken.
  bool ReadPoints(std::vector<TracedPoint>& points);
  SegmentPointsReader& Points() { return m_points; }
  const char* Why() const { return m_why; }
  bool IsBroken() const { return m_broken; }
  // Tells what a broken one left in its ring, as far as it is believable, if that `isOurs` to take.
  void GiveUp(bool isOurs);

 private:
  // Called for each item: a std::string would cost two allocations a trace.
  bool Lose(std::uint64_t lost, std::string_view reason);
  bool TakeItem(const RingItem& item);
  void PrepareHandingOn(const Hub& hub, Source& source) const;
  bool Finish();
  std::uint64_t MostPossible() const;
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
  Hub* m_hub = nullptr;
  std::shared_ptr<Source> m_source;
  std::uint64_t m_servedElsewhere = 0;
  std::uint64_t m_unread = 0;  // taken out of the ring when it broke, and not told
  std::optional<RingConsumer> m_consumer;
  bool m_waits = false, m_namesBroken = false, m_broken = false, m_finished = false;
  const char* m_why = "";
  std::chrono::nanoseconds m_ageAtStart;
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

// The age of what changed at that time of day. Where the clock has been set back since, the change
// lies ahead and is as old as the machine's run at the most: no application is to be taken for a
// liar because of that.
std::chrono::nanoseconds AgeOfChange(std::chrono::nanoseconds changed, std::chrono::nanoseconds now,
                                     std::chrono::nanoseconds uptime);

// Whether so many traces can have been made since that file was.
bool IsPossible(const SegmentRest& rest, int file);

// REQUIRES: it is possible.
// One of an earlier service, which may not have brought all of it to its monitors: they learn how
// far it came. `file`: of the segment.
std::shared_ptr<Source> Remember(const SegmentRest& rest, const std::string& machine, int file,
                                 Hub& hub);

// What an application that has not introduced itself calls itself, as its segment tells.
std::string AppNameIn(const SegmentMap& segment);

// 16 bytes made of machine, process and its start. What comes back from another machine's monitors
// is another instance to those of this one, who have not seen what was traced meanwhile.
std::array<std::uint8_t, 16> InstanceOf(const std::string& machine, std::uint32_t pid,
                                        std::uint64_t startedNs, std::uint32_t moves);
