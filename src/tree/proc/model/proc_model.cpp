// The growth of the procedure tree: files traces and updates times.
#include "tree/proc/model/proc_model.h"

#include <utility>

#include "documents/trace_doc.h"
#include "tree/proc/model/proc_build.h"

namespace {

void TakeTime(CExecutionBlock& node, std::uint64_t tic) {
  if (!node.hasTimes) {
    node.hasTimes = true;
    node.firstTrace = node.lastTrace = tic;
  } else if (tic >= node.lastTrace) {
    node.lastTrace = tic;
  }
}

void SetDuration(CExecutionBlock& node) {
  if (node.hasTimes) node.duration = static_cast<std::int64_t>(node.lastTrace - node.firstTrace);
}

// Passes the latest time from each open block to the block around it. A thread's own time is always
// up to date, and so is that of its process.
template <class Visit>
void ForEachOpenBlock(CProcessThread& thread, Visit&& visit) {
  for (CExecutionBlock* block = thread.currentBlock; block != &thread; block = block->parent) {
    if (block->parent != &thread) TakeTime(*block->parent, block->lastTrace);
    visit(*block);
  }
}

std::unique_ptr<CExecutionBlock> MakeLevel(unsigned level, TraceEvent_i* event,
                                           CExecutionBlock& above, const TraceFacts& facts) {
  switch (level) {
    case LevelIndex::kMachine:
      return std::make_unique<CMachine>(event, facts.machine);
    case LevelIndex::kApplication:
      return std::make_unique<CApplication>(event, &above, facts.application);
    case LevelIndex::kProcess:
      return std::make_unique<CProcess>(event, &above, facts.process);
    default:
      return std::make_unique<CProcessThread>(event, &above, facts.thread);
  }
}

CProcess& ProcessOf(CProcessThread& thread) {
  return static_cast<CProcess&>(*thread.parent);
}

}  // namespace

ProcModel::ProcModel(const CTraceDoc& document, CTraceFilter& filter, ProcItems* items)
    : m_document(document), m_filter(&filter), m_items(items), m_labels(document.m_names, items) {}

void ProcModel::Clear() {
  m_root.Clear();
  m_leaves.Clear();
  m_blocks.Clear();
  m_levels.Clear();
  m_words.Clear();
  m_takenOutLeaves.clear();
  m_search.Clear();
  m_threadCursor = nullptr;
  m_made.clear();
  m_touched.clear();
  m_labels.Clear();
}

void ProcModel::BeginBatch() {
  if (m_batches++ == 0) m_pass = std::make_unique<FilterPass>(*m_filter, m_document);
}

void ProcModel::EndBatch() {
  if (--m_batches > 0) return;
  m_pass.reset();
  TimeTouched();
}

// Updates the times and labels of the nodes above live traces, once for all traces that came.
void ProcModel::TimeTouched() {
  for (CProcessThread* const thread : m_touched) {
    const auto time = [this](CExecutionBlock& node) {
      SetDuration(node);
      m_labels.SetLater(node);
    };
    ForEachOpenBlock(*thread, time);
    time(*thread);
    time(ProcessOf(*thread));
    thread->touched = false;
  }
  m_touched.clear();
  m_labels.SetWaiting();
}

void ProcModel::AddAll() {
  ProcBuild build(m_document, *this);
  while (!build.DoPart()) {
  }
}

void ProcModel::ShowBy(ProcItems& items) {
  m_items = &items;
  m_labels.SetItems(items);
  for (std::size_t i = 0; i < m_root.children.size(); ++i)
    if (InsertItem(*m_root.children[i], true) && i == 0) m_items->OnFirstMachine();
}

TreeItem ProcModel::AddTrace(TraceEvent_i* event, bool live) {
  if (m_pass ? !m_pass->Matches(*event) : !m_filter->Matches(*event, m_document)) return 0;
  return File(event, live);
}

TreeItem ProcModel::File(TraceEvent_i* event, bool live) {
  const TraceFacts facts(*event);
  CProcessThread& thread = ThreadOf(facts, event);
  CExecutionBlock& block = *thread.currentBlock;
  const bool expanded = IsOpen(block);
  m_search.OnTrace(thread, facts.sequenceNumber, m_leaves.Next());

  CTraceEvent* shown = nullptr;
  if (facts.mark == BlockMark::Begin) {
    shown = &OpenBlock(block, thread, event, facts);
  } else {
    AddChild(block, thread, event, facts.tic);
    shown = block.children.back();
  }
  const TreeItem item = InsertItem(*shown, expanded);
  if (facts.mark == BlockMark::End && &block != &thread) CloseBlock(block, thread, live);
  m_root.traceCount = static_cast<int>(static_cast<unsigned>(m_root.traceCount) + 1);
  if (live && !std::exchange(thread.touched, true)) m_touched.push_back(&thread);
  if (live && m_batches == 0) TimeTouched();
  return item;
}

// Appends the leaf. Only leaves have a time of their own.
void ProcModel::AddChild(CExecutionBlock& block, CProcessThread& thread, TraceEvent_i* event,
                         std::uint64_t tic) {
  block.children.AppendLeaf(m_words, m_leaves.Make(event, &block));
  TakeTime(block, tic);
  if (&block != &thread) TakeTime(thread, tic);
  TakeTime(ProcessOf(thread), tic);
}

CExecutionBlock& ProcModel::OpenBlock(CExecutionBlock& around, CProcessThread& thread,
                                      TraceEvent_i* event, const TraceFacts& facts) {
  CExecutionBlock& block = m_blocks.Make(event, around);
  block.sequenceNumber = facts.sequenceNumber;
  block.unreachable = around.unreachable;
  block.thread = &thread;
  thread.currentBlock = &block;
  around.children.AppendBlock(m_words, &block);
  m_made.push_back(&block);
  AddChild(block, thread, event, facts.tic);
  return block;
}

// Kept: an End closes the innermost block, whatever text follows the mark.
void ProcModel::CloseBlock(CExecutionBlock& block, CProcessThread& thread, bool live) {
  block.closed = true;
  m_search.OnClosed(block);
  thread.currentBlock = block.parent;
  if (block.parent != &thread) TakeTime(*block.parent, block.lastTrace);
  if (!live) return;
  SetDuration(block);
  m_labels.SetLater(block);
}

bool ProcModel::IsOpen(const CTraceEvent& node) const {
  return node.treeItem && m_items->IsExpanded(node.treeItem);
}

TreeItem ProcModel::InsertItem(CTraceEvent& node, bool wanted) {
  if (!wanted || !m_items) return 0;
  return m_items->InsertTreeItem(node.parent ? node.parent->treeItem : 0, node);
}

CProcessThread& ProcModel::ThreadOf(const TraceFacts& facts, TraceEvent_i* event) {
  const std::uint64_t key = facts.ThreadKey();
  if (m_threadCursor && m_threadKey == key) return *m_threadCursor;
  CProcessThread* const thread = m_levels.FindThread(key);
  m_threadCursor = thread ? thread : &MakePath(facts, event);
  m_threadKey = key;
  return *m_threadCursor;
}

CProcessThread& ProcModel::MakePath(const TraceFacts& facts, TraceEvent_i* event) {
  CExecutionBlock* node = &m_root;
  for (unsigned level = LevelIndex::kMachine; level <= LevelIndex::kThread; ++level) {
    CExecutionBlock* const above = node;
    node = m_levels.Find(level, facts.ThreadKey());
    if (node) continue;
    node = &m_levels.Add(level, facts.ThreadKey(), MakeLevel(level, event, *above, facts));
    node->sequenceNumber = facts.sequenceNumber;
    above->children.AppendBlock(m_words, node);
    m_made.push_back(node);
    const bool isMachine = level == LevelIndex::kMachine;
    // Until a user opens a node, only machines are visible.
    const TreeItem item = InsertItem(*node, isMachine || IsOpen(*above));
    if (isMachine && item && m_root.children.size() == 1) m_items->OnFirstMachine();
  }
  auto& thread = static_cast<CProcessThread&>(*node);
  m_search.OnThread(thread);
  return thread;
}

// In the order of storage: the time of a node does not depend on that of another one, once the
// times of the open blocks have been passed outwards.
void ProcModel::UpdateDurations() {
  for (std::size_t part = 0; UpdateDurations(part); ++part) {
  }
}

bool ProcModel::UpdateDurations(std::size_t part) {
  const auto time = [this](CExecutionBlock& node) {
    SetDuration(node);
    m_labels.Set(node);
  };
  if (part > m_blocks.Pieces()) return false;
  if (part > 0) {
    m_blocks.ForEachIn(part - 1, time);
    return true;
  }
  m_levels.ForEach([&](CExecutionBlock& node) {
    if (node.Kind() == NodeKind::Thread)
      ForEachOpenBlock(static_cast<CProcessThread&>(node), [](CExecutionBlock&) {});
    time(node);
  });
  return true;
}
