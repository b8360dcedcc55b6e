// The traces of the applications that the user has chosen.
//
// Threads  Interface thread.
#pragma once

#include <functional>

#include "wizard/tables/wizard_tables.h"

// An entry for each trace that the application knows, with its settings still to be read. An entry
// that is there keeps its id. REQUIRES: the entry has a handle.
void CollectTraces(WizApp& entry);
// Reads the settings, and the ids, of the traces that have none yet. REQUIRES: as above.
void ReadSettings(WizApp& entry);

// A handle on an application of a machine; null when the machine cannot be reached.
using WizOpenApp = std::function<trace_App_i*(const std::string& host, const std::string& app)>;
// Collects the traces of the selected applications with the settings that the machine has now, for
// which it opens a handle on those that have none. An application that cannot be reached is not
// selected any more. Each is asked for at most 5 seconds; a machine that has not answered is not
// asked again, and one that goes on refusing is asked for no more handles.
// REQUIRES: the machine has a connection and outlives this, and what is selected stays so.
class SelectedReading {
 public:
  SelectedReading(WizMachine& machine, WizOpenApp open);
  // Goes on with the next application, and with those behind it that the machine is not asked for;
  // true when all are done.
  bool ReadNext();
  // False: an application could not be reached.
  bool All() const { return m_all; }
  std::size_t Done() const { return m_done; }
  std::size_t Count() const { return m_count; }

 private:
  bool MayAsk(const WizApp& entry) const;
  bool Read(const std::string& name, WizApp& entry);
  void ReadOne();

  WizMachine& m_machine;
  const WizOpenApp m_open;
  const std::size_t m_count;
  WizApps::iterator m_next;
  std::size_t m_done = 0;
  bool m_all = true, m_answers = true;
  int m_refusals = 0;
};
// All at once. False: an application could not be reached.
bool ReadSelected(WizMachine& machine, const WizOpenApp& open);

// The first selected one from this place on; the end if there is none.
WizApps::iterator NextSelected(WizApps& apps, WizApps::iterator from);
// Gives every other machine a copy of this one's connection, applications and file name.
// REQUIRES: `from` is a machine of the table.
void CopyToOthers(WizMachines& machines, WizMachines::const_iterator from);
