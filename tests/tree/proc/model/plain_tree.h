// The procedure tree in its simplest form: every search is a walk, every time is passed up node by
// node, and every trim is followed by a pass over all nodes. The model must give the same tree.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "records/trace_event.h"
#include "tree/proc/model/plain_node.h"

class PlainTree {
 public:
  using Node = PlainNode;

  explicit PlainTree(const NameMap& names) : m_names(names) { Clear(); }

  void Clear() {
    m_nodes.clear();
    m_root = New('r', nullptr, nullptr);
  }

  void AddTrace(const TraceEvent_i* event, bool live) {
    Node* const machine = Level('m', *m_root, event, event->GetMachineId());
    Node* const application = Level('a', *machine, event, event->GetAppId());
    Node* const process = Level('p', *application, event, event->GetPidId());
    Node* const thread = Level('t', *process, event, event->GetTidId());
    Node* const block = thread->current;
    const std::string text = event->GetText();
    if (text.substr(0, 7) == "Begin: ") {
      Node* const inner = New('b', event, block);
      thread->current = inner;
      AddChild(block, inner, live);
      AddChild(inner, New('l', event, inner), live);
    } else {
      AddChild(block, New('l', event, block), live);
      if (text.substr(0, 5) == "End: " && block != thread) {
        block->closed = true;
        thread->current = block->parent;
      }
    }
  }

  void UpdateDurations() { UpdateDurations(*m_root); }

  void RemoveTrace(const TraceEvent_i* event) {
    const Place place = FindNode(event);
    if (place.in) {
      Node* const node = place.in->children[place.at];
      Label(*place.in);  // stores the text of the last child
      place.in->children.erase(place.in->children.begin() + static_cast<std::ptrdiff_t>(place.at));
      node->taken = true;
    }
    Forget(event);
  }

  struct Place {
    Node* in = nullptr;
    std::size_t at = 0;
  };
  Place FindNode(const TraceEvent_i* event) {
    return FindNode(*m_root, event, event->GetSequenceNumber());
  }

  std::string Label(Node& node) const { return PlainLabel(node, m_names); }
  Node& Root() { return *m_root; }

 private:
  Node* New(char kind, const TraceEvent_i* event, Node* parent) {
    Node& node = m_nodes.emplace_back();
    node.kind = kind;
    node.event = event;
    node.parent = parent;
    node.current = &node;
    if (event) {
      node.number = event->GetSequenceNumber();
      node.tic = event->GetTicCount();
      node.text = event->GetText();
    }
    if (kind == 'b') node.label = node.text.substr(7);
    return &node;
  }

  Node* Level(char kind, Node& above, const TraceEvent_i* event, NameId id) {
    for (Node* const child : above.children)
      if (child->id == id) return child;
    Node* const node = New(kind, event, kind == 'm' ? nullptr : &above);
    node->id = id;
    above.children.push_back(node);
    return node;
  }

  void AddChild(Node* node, Node* child, bool live) {
    node->children.push_back(child);
    if (child->kind != 'l') return;
    bool first = true, last = true;
    for (Node* at = node; at && at->kind != 'a' && (first || last); at = at->parent) {
      if (first && at->first) first = false;
      if (first) at->first = child;
      if (!last) continue;
      if (at->last && child->tic < at->last->tic) {
        last = false;
        continue;
      }
      at->last = child;
      if (live) at->duration = static_cast<std::int64_t>(child->tic - at->first->tic);
    }
  }

  void UpdateDurations(Node& node) {
    for (Node* const child : node.children)
      if (child->kind != 'l') UpdateDurations(*child);
    if (node.first && node.last)
      node.duration = static_cast<std::int64_t>(node.last->tic - node.first->tic);
    Label(node);
  }

  Place FindNode(Node& in, const TraceEvent_i* event, std::uint32_t wanted) {
    Place best;
    const auto distance = [wanted](const Place& place) {
      const std::int64_t number = place.in->children[place.at]->number;
      return number > wanted ? number - wanted : wanted - number;
    };
    for (std::size_t at = 0; at < in.children.size(); ++at) {
      Node& entry = *in.children[at];
      if (entry.kind != 'l') {
        const Place found = FindNode(entry, event, wanted);
        if (!found.in) continue;
        if (found.in->children[found.at]->event == event) return found;
        if (!best.in || distance(found) < distance(best)) best = found;
        continue;
      }
      if (entry.event == event) return {&in, at};
      if (entry.number <= wanted) continue;
      if (at == 0) return {&in, 0};
      const std::uint32_t d1 = wanted - in.children[at - 1]->number, d2 = entry.number - wanted;
      return {&in, d1 >= d2 ? at : at - 1};
    }
    return best;
  }

  // The trace is destroyed: removes its leaf wherever it is, and clears it in the nodes that it
  // made. Then removes closed blocks without content, unless a node that was taken out of them
  // lives.
  void Forget(const TraceEvent_i* event) {
    for (Node& node : m_nodes) {
      if (node.event != event || !event) continue;
      node.event = nullptr;
      if (node.kind == 'l') Leave(node);
    }
    for (bool again = true; again;) {
      again = false;
      for (Node& node : m_nodes) {
        if (node.kind != 'b' || node.gone || node.event || !node.closed || !node.children.empty())
          continue;
        const bool hung = std::any_of(m_nodes.begin(), m_nodes.end(), [&node](const Node& other) {
          return other.parent == &node && other.taken && !other.gone;
        });
        if (hung) continue;
        Leave(node);
        again = true;
      }
    }
  }
  void Leave(Node& node) const {
    node.gone = true;
    Label(*node.parent);
    auto& siblings = node.parent->children;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), &node), siblings.end());
  }

  const NameMap& m_names;
  std::deque<Node> m_nodes;
  Node* m_root = nullptr;
};
