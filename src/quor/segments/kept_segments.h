// Segments whose traces were all taken. Their files are kept for the counts in them until every
// monitor that is connected has read these traces, or the machine that they go to has them.
//
// Owner    Borrows the watch, whose files it removes.
// Errors   Beyond a bound, files are removed early: in total, and at the service of a machine for
//          each account.
// Threads  The service's one thread.
#pragma once

#include <asio/steady_timer.hpp>
#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "quor/hub/source.h"
#include "quor/segments/segment_watch.h"

class KeptSegments {
 public:
  using Key = std::pair<std::uint64_t, std::uint64_t>;  // device and inode of the segment
  static constexpr std::size_t kKeptLongMax = 4096, kKeptOfAccountMax = 1024;

  KeptSegments(asio::io_context& io, SegmentWatch& watch) : m_watch(watch), m_timer(io) {}

  // `source`: null when no monitor needs to learn of it. `account`: whose file it is; none at a
  // service of one account.
  void Keep(const std::string& name, const Key& key, std::shared_ptr<Source> source,
            std::optional<uid_t> account);
  bool Has(const Key& key) const { return m_keys.contains(key); }
  void Clear();

 private:
  struct Kept {
    std::chrono::steady_clock::time_point until;
    std::string name;
    Key key;
    std::shared_ptr<Source> source;
    bool wasUnderWay = false;
  };
  static bool IsWanted(Kept& kept);
  void Push(Kept kept);
  void Remove(const Kept& kept);
  void RemoveDue();

  SegmentWatch& m_watch;
  asio::steady_timer m_timer;
  std::deque<Kept> m_kept;
  std::map<Key, std::optional<uid_t>> m_keys;  // and their accounts
  std::map<uid_t, std::size_t> m_ofAccount;
};
