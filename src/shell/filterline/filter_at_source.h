// The filter text of a live window at the source: the service sends only what matches.
//
// Shape    Off at first. While it is on, the text in force goes to the service of the monitor. One
//          that the service cannot ask, because of "delta" say, works in the window alone. So do
//          all texts while the monitor has another window, which may show other traces.
// Owner    The line owns it. Borrows the document, and the owner of the line.
// Threads  Interface thread.
#pragma once

#include <string>

#include "where/where_program.h"

class CTraceDoc;
class CTraceRealtimeDoc;
class FilterLineOwner;

class FilterAtSource {
 public:
  explicit FilterAtSource(const FilterLineOwner& owner) : m_owner(owner) {}

  void SetDocument(CTraceDoc& document);
  // Why the service of the window cannot be asked; empty: it can.
  std::string WhyNot() const;
  bool IsOn() const { return m_on; }
  void Set(bool on);
  // Null: no text is in force.
  void Send(const WhereProgramPtr& program);
  // How the text stands there, and what was withheld; empty: nothing to say.
  std::string Note() const;
  // Follows the windows of the monitor and the zone of times; call it now and then. Is the note
  // another one than at the last call?
  bool HasNews();

 private:
  const FilterLineOwner& m_owner;
  CTraceRealtimeDoc* m_monitor = nullptr;  // null: it shows no live traces
  bool m_on = false;
  std::string m_sent;      // to the service
  std::string m_notTaken;  // why the text in force is not sent
  std::string m_lastNote;
};
