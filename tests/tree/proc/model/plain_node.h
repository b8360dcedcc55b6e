// A node of the plain procedure tree, and its label by the plain rules.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "records/timer.h"
#include "records/trace_event.h"

struct PlainNode {
  char kind = 'l';  // r(oot), m(achine), a(pplication), p(rocess), t(hread), b(lock), l(eaf)
  const TraceEvent_i* event = nullptr;
  PlainNode* parent = nullptr;
  std::vector<PlainNode*> children = {};
  PlainNode *first = nullptr, *last = nullptr, *current = nullptr;
  std::int64_t duration = 0;
  NameId id = 0;
  std::uint32_t number = 0;
  std::uint64_t tic = 0;
  std::string text = {}, label = {};
  bool closed = false, taken = false, gone = false;
};

inline std::string PlainSpan(std::int64_t tics) {
  trc_Timer_i* const timer = CreateTimer();
  timer->AddRef();
  timer->SetPicoseconds(static_cast<double>(tics));
  const std::string text = timer->Format();
  timer->Release();
  return text;
}

// A block stores in `label` the text of its first child.
inline std::string PlainLabel(PlainNode& node, const NameMap& names) {
  const std::string name = NameOf(names, node.id);
  switch (node.kind) {
    case 'm':
    case 'a':
      return name;
    case 'p':
      return "PID " + name + " - " + PlainSpan(node.duration);
    case 't':
      return "TID " + name + " - " + PlainSpan(node.duration);
    case 'b':
      if (!node.children.empty())
        node.label =
            node.children[0]->text.substr(std::min<std::size_t>(7, node.children[0]->text.size()));
      return node.label + " - " + PlainSpan(node.duration);
    default:
      return node.text;
  }
}
