// The level nodes by their ids, so that a trace's thread is found without a scan, however many
// processes and threads there are. The ids of siblings differ, so an id has only one node.
//
// Shape    A small direct-mapped table of threads, and a map per level for what is not in the
//          table.
// Owner    Owns the nodes.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>

#include "tree/proc/nodes/nodes.h"

class LevelIndex {
 public:
  static constexpr unsigned kMachine = 0, kApplication = 1, kProcess = 2, kThread = 3;

  CProcessThread* FindThread(std::uint64_t threadKey) {
    Slot& slot = m_slots[(threadKey * 0x9E3779B97F4A7C15u) >> (64 - kSlotBits)];
    if (slot.thread && slot.key == threadKey) return slot.thread;
    auto* const thread = static_cast<CProcessThread*>(Find(kThread, threadKey));
    if (thread) slot = {threadKey, thread};
    return thread;
  }
  // Null when there is none.
  CExecutionBlock* Find(unsigned level, std::uint64_t threadKey) const;
  CExecutionBlock& Add(unsigned level, std::uint64_t threadKey,
                       std::unique_ptr<CExecutionBlock> node);
  void Clear();
  // Visits the threads first.
  template <class Visit>
  void ForEach(Visit&& visit) const {
    for (unsigned level = kThread + 1; level-- > kMachine;)
      for (const auto& entry : m_nodes[level]) visit(*entry.second);
  }

 private:
  // The part of a thread's key that identifies the level.
  static std::uint64_t KeyAt(unsigned level, std::uint64_t threadKey) {
    return threadKey >> (16 * (kThread - level));
  }
  static constexpr unsigned kSlotBits = 9;
  struct Slot {
    std::uint64_t key = 0;
    CProcessThread* thread = nullptr;
  };
  std::array<Slot, std::size_t{1} << kSlotBits> m_slots;
  std::array<std::unordered_map<std::uint64_t, std::unique_ptr<CExecutionBlock>>, 4> m_nodes;
};
