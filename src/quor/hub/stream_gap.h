// What a stream had to drop, source by source, until it is told in front of what waits.
//
// Shape    An entry for each source that the hub still knows or the stream has spoken of. The other
//          ones came, were dropped whole and forgotten while nothing was told: of these there may
//          be any number, and only their sum is kept. It is told in the name of the first of them.
//          One that an earlier service knew is told singly, because a monitor may have heard of it
//          and count what it missed; but not more than kSinglyMax of them.
// Owner    Shares the sources.
// Errors   None.
// Threads  One.
#pragma once

#include <deque>
#include <list>
#include <unordered_map>

#include "quor/hub/batch.h"

class StreamGap {
 public:
  static constexpr std::size_t kSinglyMax = 16384;

  bool IsEmpty() const { return m_lost.empty() && m_forgotten.empty() && !m_sum; }
  void Add(const std::shared_ptr<Source>& source, std::uint64_t lost);
  // The word that the hub has forgotten it was dropped as well. `spokenOf`: by this stream.
  void Forget(const std::shared_ptr<Source>& source, bool spokenOf);
  // As much of it as one batch holds, in the order of the first losses.
  SharedBatch Take(HubNames& names, bool oneSourceEach, const char* reason);

 private:
  using Losses = std::list<SourceDelta>;
  class Notes;
  void AddToSum(const std::shared_ptr<Source>& source, std::uint64_t lost);
  void NoteWithSum(const std::shared_ptr<Source>& source);
  void TellSum();

  Losses m_lost;
  std::unordered_map<const Source*, Losses::iterator> m_places;
  std::deque<std::shared_ptr<Source>> m_forgotten;  // told behind the last loss
  std::shared_ptr<Source> m_sum;                    // null: of none
  std::uint64_t m_sumLost = 0;
  std::shared_ptr<Notes> m_notes;  // of those in the sum
};
