// The model beside the plain rules, over random streams: the same tree, labels and durations, and
// the same items.
#include <gtest/gtest.h>

#include <random>

#include "tree/proc/model/proc_model_harness.h"
#include "tree/proc/model/same_tree.h"

namespace {

struct Stream {
  unsigned seed;
  std::size_t limit;  // traces held
  int threads;        // over machines, applications and processes
  int hiddenPercent;  // traces that the filter hides
  int numbering;      // 0: rising by one; 1: rising with gaps; 2: in no order; 3: none at all;
                      // 4: rising, and beginning again; 5: rising, with some that have none
  int beginPercent;
  int endPercent;
};

std::ostream& operator<<(std::ostream& out, const Stream& stream) {
  return out << "seed " << stream.seed << ", limit " << stream.limit << ", threads "
             << stream.threads << ", hidden " << stream.hiddenPercent << " %, numbering "
             << stream.numbering << ", Begins " << stream.beginPercent << " %, Ends "
             << stream.endPercent << " %";
}

class ProcModelOracle : public testing::TestWithParam<Stream>, protected ProcModelHarness {
 protected:
  ProcModelOracle() : m_plain(m_document.m_names), m_random(GetParam().seed) {
    m_document.m_names[9] = {"later"};
  }

  int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

  TraceEvent_i* MakeTrace() {
    const Stream& stream = GetParam();
    TraceFields fields;
    if (m_burst-- <= 0) {
      m_thread = Below(stream.threads);
      m_burst = Below(6);
    }
    fields.machine = m_thread % 3 == 2 ? 6 : 1;
    fields.app = m_thread % 5 == 4 ? 7 : 2;
    fields.pid = static_cast<NameId>(m_thread / 4 % 2 == 0 ? 3 : 8);
    fields.tid = static_cast<NameId>(100 + m_thread);
    fields.category = Below(100) < stream.hiddenPercent ? 9 : 10;
    const int dice = Below(100);
    const std::string name = std::to_string(m_number);
    if (dice < stream.beginPercent) {
      fields.text = "Begin: " + name;
    } else if (dice < stream.beginPercent + stream.endPercent) {
      fields.text = "End: " + name;
    } else {
      fields.text = "plain trace " + name;
    }
    m_tic += static_cast<std::uint64_t>(Below(3000));
    fields.tic = Below(20) == 0 ? m_tic / 2 : m_tic;
    m_number += stream.numbering == 1 ? 1 + static_cast<std::uint32_t>(Below(9)) : 1;
    if (stream.numbering == 4 && Below(300) == 0) m_number = static_cast<std::uint32_t>(Below(50));
    const bool none = stream.numbering == 3 || (stream.numbering == 5 && Below(60) == 0);
    fields.count = none                    ? kNoSequenceNumber
                   : stream.numbering == 2 ? static_cast<std::uint32_t>(Below(1000))
                                           : m_number;
    return Trace(fields);
  }

  virtual bool Passes(const TraceEvent_i& event) { return m_filter.Matches(event) != 0; }

  void Tick(int traces) {
    std::deque<TraceEvent_i*> batch;
    for (int i = 0; i < traces; ++i) {
      if (m_document.m_traces.size() >= GetParam().limit) TrimBoth(batch);
      batch.push_back(MakeTrace());
    }
    const ProcModel::Batch adding(m_model);
    for (TraceEvent_i* const event : batch) {
      m_model.AddTrace(event, true);
      if (Passes(*event)) m_plain.AddTrace(event, true);
    }
  }

  void TrimBoth(std::deque<TraceEvent_i*>& batch) {
    constexpr std::size_t kTrim = 10;
    for (std::size_t i = 0; i < kTrim; ++i) m_plain.RemoveTrace(m_document.m_traces[i]);
    m_plain.UpdateDurations();
    for (std::size_t i = 0; i < kTrim && !batch.empty(); ++i)
      if (batch.front() == m_document.m_traces[i]) batch.pop_front();
    Trim(kTrim);
  }

  void RebuildBoth() {
    Rebuild();
    m_plain.Clear();
    m_document.m_traces.ForEach(0, [this](TraceEvent_i* event) {
      if (Passes(*event)) m_plain.AddTrace(event, false);
    });
    m_plain.UpdateDurations();
  }

  void ExpandSome() {
    std::vector<CTraceEvent*> closed;
    for (const auto& [item, entry] : m_items.m_items)
      if (!entry.expanded && entry.node->Kind() != NodeKind::Leaf) closed.push_back(entry.node);
    if (!closed.empty()) m_items.Expand(*closed[m_random() % closed.size()]);
  }

  void ExpectTheSame() {
    ExpectSameNodes(m_model, Block({}), m_plain, m_plain.Root(),
                    [this](const CTraceEvent& node, const std::string& label) {
                      ASSERT_EQ(node.treeItem ? m_items.TextOf(node) : label, label) << "the item";
                    });
  }

  void ExpectTheSameFound() {
    for (int i = 0; i < 20 && !m_document.m_traces.empty(); ++i) {
      const std::size_t position = m_random() % m_document.m_traces.size();
      const TraceEvent_i* const event = m_document.m_traces[position];
      const NodePosition found = m_model.FindNode(*event);
      const PlainTree::Place place = m_plain.FindNode(event);
      ASSERT_EQ(static_cast<bool>(found), place.in != nullptr);
      EXPECT_EQ(FindNodeByWalk(Block({}), *event), found);
      if (!found) continue;
      EXPECT_EQ(found.position, place.at);
      EXPECT_EQ(found.Node()->event, place.in->children[place.at]->event);
      EXPECT_EQ(m_model.NodeLabel(*found.owner), m_plain.Label(*place.in));
    }
  }

  PlainTree m_plain;

 private:
  std::mt19937 m_random;
  std::uint32_t m_number = 0;
  std::uint64_t m_tic = 1'000'000;
  int m_thread = 0, m_burst = 0;
};

TEST_P(ProcModelOracle, GivesTheSameTreeAsThePlainRules) {
  if (GetParam().hiddenPercent > 0) HideCategory9();
  for (int tick = 0; tick < 60; ++tick) {
    SCOPED_TRACE(tick);
    Tick(1 + Below(40));
    ASSERT_NO_FATAL_FAILURE(ExpectTheSame());
    ASSERT_NO_FATAL_FAILURE(ExpectTheSameFound());
    for (int i = Below(3); i > 0; --i) ExpandSome();
    if (Below(15) == 0) {
      if (GetParam().hiddenPercent > 0) m_filter.allTraces = Below(2);
      RebuildBoth();
      ASSERT_NO_FATAL_FAILURE(ExpectTheSame());
    }
  }
}

std::vector<Stream> Streams() {
  std::vector<Stream> streams;
  unsigned seed = 1;
  for (const int numbering : {0, 1, 2, 3, 4, 5})
    for (const int hidden : {0, 30, 70})
      for (const int threads : {1, 7, 40})
        for (const int blocks : {5, 25, 45})
          streams.push_back({seed++, 150, threads, hidden, numbering, blocks, blocks});
  // Blocks that stay open, one inside the other, and are emptied; and that close late. The numbers
  // may begin again in the middle of them.
  for (const int numbering : {0, 4})
    for (const int hidden : {30, 70})
      for (const int threads : {1, 3, 7})
        for (const int ends : {2, 20, 38})
          for (const std::size_t limit : {60, 150})
            streams.push_back({seed++, limit, threads, hidden, numbering, 40, ends});
  // Next to no trace outside of a block, and long runs that overlap.
  for (const int hidden : {5, 30, 70})
    for (const int threads : {1, 3})
      for (const std::size_t limit : {150, 600})
        streams.push_back({seed++, limit, threads, hidden, 4, 45, 40});
  // A block counts before a leaf without a number, although its own number is too great.
  streams.push_back({20150, 150, 7, 30, 5, 45, 45});
  return streams;
}

INSTANTIATE_TEST_SUITE_P(RandomStreams, ProcModelOracle, testing::ValuesIn(Streams()));

// A filter text and what it means.
struct TextRule {
  const char* text;
  bool (*passes)(const TraceEvent_i& event, const TraceEvent_i* before);
};

bool IsOneProcess(const TraceEvent_i& event, const TraceEvent_i* before) {
  return before && event.GetPidId() == before->GetPidId() &&
         event.GetMachineId() == before->GetMachineId();
}

constexpr TextRule kTextRules[] = {
    {"category != later and text contains 7",
     [](const TraceEvent_i& event, const TraceEvent_i*) {
       return event.GetCategoryId() != 9 && event.GetText().find('7') != std::string::npos;
     }},
    {"delta >= 1ns or text startswith Begin",
     [](const TraceEvent_i& event, const TraceEvent_i* before) {
       const auto span = [&] {
         return static_cast<std::int64_t>(event.GetTicCount() - before->GetTicCount());
       };
       return (IsOneProcess(event, before) && span() >= 1000) ||
              event.GetText().substr(0, 5) == "Begin";
     }},
    {"severity == info and (count in {3..200, 300..100000} or text matches \"^End: .*[02468]$\")",
     [](const TraceEvent_i& event, const TraceEvent_i*) {
       const std::uint32_t count = event.GetSequenceNumber();
       const std::string text = event.GetText();
       const bool even = (text.back() - '0') % 2 == 0;
       return (count >= 3 && count <= 200) || (count >= 300 && count <= 100000) ||
              (text.substr(0, 5) == "End: " && even);
     }},
};

class ProcModelText : public ProcModelOracle {
 protected:
  bool Passes(const TraceEvent_i& event) override {
    const TraceEvent_i *last = nullptr, *before = nullptr;
    m_document.m_traces.ForEach(0, [&](const TraceEvent_i* one) {
      if (one == &event) before = last;
      last = one;
    });
    return m_filter.Matches(event) && (!m_rule || m_rule->passes(event, before));
  }
  void SetRule(const TextRule* rule) {
    m_rule = rule;
    WhereError error;
    m_filter.where = rule ? WhereProgram::Compile(rule->text, error) : nullptr;
    ASSERT_TRUE(!rule || m_filter.where) << error.reason;
  }

 private:
  const TextRule* m_rule = nullptr;
};

TEST_P(ProcModelText, ATextFiltersWhatTheMarksLetThroughInATickAndInARebuild) {
  if (GetParam().hiddenPercent > 0) HideCategory9();
  SetRule(&kTextRules[GetParam().seed % std::size(kTextRules)]);
  for (int tick = 0; tick < 60; ++tick) {
    SCOPED_TRACE(tick);
    Tick(1 + Below(40));
    ASSERT_NO_FATAL_FAILURE(ExpectTheSame());
    for (int i = Below(3); i > 0; --i) ExpandSome();
    if (Below(10) != 0) continue;
    const int rule = Below(static_cast<int>(std::size(kTextRules)) + 1);
    SetRule(rule == 0 ? nullptr : &kTextRules[rule - 1]);
    RebuildBoth();
    ASSERT_NO_FATAL_FAILURE(ExpectTheSame());
  }
}

std::vector<Stream> TextStreams() {
  std::vector<Stream> streams;
  for (unsigned seed = 0; seed < 36; ++seed) {
    const int blocks = seed % 2 ? 30 : 10;
    streams.push_back({seed, 150, seed % 4 ? 5 : 1, seed / 3 % 2 ? 30 : 0,
                       static_cast<int>(seed % 5), blocks, blocks});
  }
  return streams;
}

INSTANTIATE_TEST_SUITE_P(RandomStreams, ProcModelText, testing::ValuesIn(TextStreams()));

}  // namespace
