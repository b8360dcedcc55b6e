// The last sources that have ended, so that a monitor that was away learns their counts, and the
// sum of all that were forgotten.
//
// Owner    Shares the sources.
// Threads  One.
#pragma once

#include <deque>
#include <map>
#include <vector>

#include "quor/hub/source.h"

class EndedSources {
 public:
  // The one that must be forgotten now to make room; null: none.
  std::shared_ptr<Source> Keep(const std::shared_ptr<Source>& source);
  // The same instance of the same account, which comes back; null: it is not here.
  std::shared_ptr<Source> Take(const Source& source);
  // The same instance, but of another account.
  bool HasAnothers(const Source& source) const;
  void AppendTo(std::vector<std::shared_ptr<Source>>& all) const;

  void CountForgotten(const Source& source);
  std::uint64_t Forgotten(std::optional<uid_t> ofAccount) const;

 private:
  using Sources = std::deque<std::shared_ptr<Source>>;
  // Monitors may know a source from an earlier service. Its serial then does not say what they
  // missed from this one. Such sources are kept in a list of their own, and longer.
  static constexpr std::size_t kEndedKept = 256, kEarlierKept = 8192;

  Sources m_ended, m_earlier;
  std::uint64_t m_forgotten = 0;
  std::map<uid_t, std::uint64_t> m_forgottenOf;
};
