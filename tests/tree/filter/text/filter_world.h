// Random names, the filter that knows some of them, and traces of known and later names. The texts
// stand in filter_world_texts.h.
#pragma once

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "documents/trace_doc.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "tree/filter/filter_dialog.h"
#include "tree/filter/text/filter_names.h"
#include "where/plain_where.h"

class FilterWorld {
 public:
  explicit FilterWorld(unsigned seed) : m_random(seed) {}

  std::size_t Below(std::size_t limit) { return m_random() % limit; }
  template <class T>
  const T& OneOf(const std::vector<T>& all) {
    return all[Below(all.size())];
  }

  // Ids 1 to 20 have names, each another one; `hostile`: some have the same, and some have none.
  void MakeNames(bool hostile) {
    std::vector<std::string> names = {
        "Sql",    "sql",      "Cache",    "12",  "0x1f", "4711 alice", "4711 bob",
        "12 bob", "web 1",    "a\"b\\c",  "7",   "31",   "\xff\xfe",   "\xc3\xa9t\xc3\xa9",
        "4711",   "12 bob x", "10..20",   "and", "",     "0X0c",       "main",
        "007",    "a,b}",     "a\nb\x01", "in"};
    std::shuffle(names.begin(), names.end(), m_random);
    m_names.clear();
    for (NameId id = 1; id <= 20; ++id) {
      m_names[id].name = names[hostile ? Below(8) : id];
      if (hostile && Below(10) == 0) m_names.erase(id);
    }
    constexpr const char* kLater[] = {"Later", "900001", "900002 zoe", "later too", "0xfffff"};
    for (NameId id = 21; id <= 25; ++id) m_names[id].name = kLater[id - 21];
  }
  // The filter of a document that has seen some of the ids. Where more may come it may know a
  // machine without processes, of a document that was cleared.
  CTraceFilter Fresh(bool mayGrow) {
    const std::size_t least = mayGrow ? 0 : 1;
    CTraceFilter filter;
    for (auto* marks : {&filter.components, &filter.categories, &filter.applications})
      for (std::size_t i = 1 + Below(6); i > 0; --i) marks->emplace(Known(), 1);
    for (std::size_t m = 1 + Below(3); m > 0; --m) {
      MachineFilterEntry& machine = filter.threads[Known()];
      for (std::size_t p = least + Below(4); p > 0; --p) {
        ProcessFilterEntry& process = machine.processes[Known()];
        for (std::size_t t = least + Below(4); t > 0; --t) process.threadMarks.emplace(Known(), 1);
      }
    }
    return filter;
  }
  // What a user does in the dialog.
  void Click(CTraceFilter& filter) {
    RecordingHost host;
    NameMap names = m_names;
    CFilterDialog dialog(host, filter, names);
    dialog.OnInitDialog();
    for (std::size_t clicks = Below(8); clicks > 0; --clicks) {
      FilterNode* node = &dialog.Tree().Root();
      while (node->ChildCount() > 0 && Below(8)) node = &node->Child(Below(node->ChildCount()));
      dialog.OnTreeClick(node, true);
    }
    dialog.OnOK();
  }
  void PressOk(CTraceFilter& filter) {
    RecordingHost host;
    NameMap names = m_names;
    CFilterDialog dialog(host, filter, names);
    dialog.OnInitDialog();
    dialog.OnOK();
  }

  // Of the names that the filter knows, and later ones where there may be some.
  PlainTrace Trace(const CTraceFilter& filter, bool later) {
    PlainTrace trace;
    TraceFields& fields = trace.fields;
    fields.component = IdOf(filter.components, later);
    fields.category = IdOf(filter.categories, later);
    fields.app = IdOf(filter.applications, later);
    do {
      SetThread(filter, fields, later);
    } while (later && IsAnotherOfItsNumber(filter, fields));
    constexpr std::uint16_t kBits[] = {0, 1, 2, 4, 3, 6, 7, 8, 32};
    fields.attributes = static_cast<std::uint16_t>(kBits[Below(9)] | Below(2) * 8 | Below(2) * 16);
    Name(trace);
    return trace;
  }
  void Name(PlainTrace& trace) const {
    const TraceFields& fields = trace.fields;
    trace.machine = NameOf(m_names, fields.machine);
    trace.application = NameOf(m_names, fields.app);
    trace.component = NameOf(m_names, fields.component);
    trace.category = NameOf(m_names, fields.category);
    trace.pid = NameOf(m_names, fields.pid);
    trace.tid = NameOf(m_names, fields.tid);
  }
  static bool Shows(CTraceFilter filter, const PlainTrace& trace) {
    return filter.Matches(*MakeEvent(trace.fields)) != 0;
  }
  static bool Shows(const WhereExpr& expr, const PlainTrace& trace) {
    return PlainWhere(0, std::nullopt).Holds(expr, trace, nullptr);
  }

  // A text on what the tree has, and now and then something else.
  WhereExpr Text(std::size_t depth) {
    const std::size_t kind = depth == 0 ? 0 : Below(6);
    if (kind <= 1) return Test();
    if (kind == 2) return WhereNot(Text(depth - 1));
    std::vector<WhereExpr> children;
    for (std::size_t i = 2 + Below(2); i > 0; --i) children.push_back(Text(depth - 1));
    return kind == 3 ? WhereAny(std::move(children)) : WhereAll(std::move(children));
  }
  // The same in other words.
  WhereExpr Rewritten(const WhereExpr& expr);

  const NameMap& Names() const { return m_names; }

 private:
  using F = WhereField;
  using O = WhereOperator;

  NameId Known() { return static_cast<NameId>(1 + Below(20)); }
  NameId Later() { return static_cast<NameId>(21 + Below(5)); }
  NameId IdOf(const std::map<NameId, int>& marks, bool later) {
    if (later && Below(4) == 0) return Later();
    return marks.empty() ? NameId{1} : std::next(marks.begin(), Below(marks.size()))->first;
  }
  template <class Map>
  const typename Map::value_type& AnyOf(const Map& map) {
    return *std::next(map.begin(), static_cast<std::ptrdiff_t>(Below(map.size())));
  }
  void SetThread(const CTraceFilter& filter, TraceFields& fields, bool later) {
    const auto& machine = AnyOf(filter.threads);
    fields.machine = machine.first;
    fields.pid = fields.tid = 0;
    if (!machine.second.processes.empty()) {
      const auto& process = AnyOf(machine.second.processes);
      fields.pid = process.first;
      if (!process.second.threadMarks.empty()) fields.tid = AnyOf(process.second.threadMarks).first;
    }
    if (!later) return;
    for (NameId* const id : {&fields.machine, &fields.pid, &fields.tid})
      if (Below(4) == 0) *id = Below(2) ? Later() : Known();
  }
  // A later process is known by its number, and a thread by its own.
  bool IsAnotherOfItsNumber(const CTraceFilter& filter, const TraceFields& fields) const {
    const auto name = [&](NameId id) { return NameOf(m_names, id); };
    for (const auto& [id, machine] : filter.threads) {
      if (id != fields.machine) {
        if (name(id) == name(fields.machine)) return true;
        continue;
      }
      for (const auto& [pid, process] : machine.processes) {
        if (pid != fields.pid) {
          if (ProcessKey::Of(name(pid)).pid == ProcessKey::Of(name(fields.pid)).pid &&
              !machine.processes.contains(fields.pid))
            return true;
          continue;
        }
        for (const auto& [tid, mark] : process.threadMarks)
          if (!process.threadMarks.contains(fields.tid) &&
              IdKey::Of(name(tid)) == IdKey::Of(name(fields.tid)))
            return true;
      }
    }
    return false;
  }
  WhereExpr Test();

  std::mt19937 m_random;
  NameMap m_names;
};
