// The traces that a stream had to drop, counted by source until they are reported in front of the
// next batch. Beside them what the stream's filter had withheld in the same batches: that was not
// lost.
//
// Shape    An entry for each source that the hub still knows or that the stream has mentioned. All
//          others came, had none of their traces sent and were forgotten before anything was
//          reported. There may be any number of these, so only the sum of their losses is kept. It
//          is reported under the first of them. A source that an earlier service knew is reported
//          singly, because a monitor may know it and count what it missed; but at most
//          kReportedSinglyMax of them are.
// Errors   None.
// Threads  One.
#pragma once

#include <deque>
#include <list>
#include <unordered_map>

#include "quor/hub/batch.h"

class StreamLosses {
 public:
  static constexpr std::size_t kReportedSinglyMax = 16384;

  bool IsEmpty() const { return m_lost.empty() && m_forgotten.empty() && !m_sum; }
  void Add(const std::shared_ptr<Source>& source, std::uint64_t lost, std::uint64_t withheld = 0);
  // The notice that the hub has forgotten a source was dropped as well. `spokenOf`: this stream has
  // mentioned the source.
  void Forget(const std::shared_ptr<Source>& source, bool spokenOf);
  // As many losses as one batch holds, in the order of the first losses.
  SharedBatch Take(HubNames& names, bool oneSourceEach, const char* reason);

 private:
  using Losses = std::list<SourceDelta>;
  class Notes;
  void AddToSum(const std::shared_ptr<Source>& source, std::uint64_t lost, std::uint64_t withheld);
  void NoteSourceOfSum(const std::shared_ptr<Source>& source);
  void ReportSum();

  Losses m_lost;
  std::unordered_map<const Source*, Losses::iterator> m_places;
  std::deque<std::shared_ptr<Source>> m_forgotten;  // reported after the last loss
  std::shared_ptr<Source> m_sum;                    // null: there is no sum
  std::uint64_t m_sumLost = 0, m_sumWithheld = 0;
  std::shared_ptr<Notes> m_notes;  // of the sources in the sum
};
