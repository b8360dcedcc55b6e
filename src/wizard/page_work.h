// The long work of the wizard's pages: reading many applications, and configuring them.
//
// Threads  Interface thread. A part asks the machine about one application.
#pragma once

#include "docview/dialogs/long_work.h"
#include "wizard/tables/app_traces.h"
#include "wizard/tables/chosen_apps.h"

class CConfigDoc;

// Next on the page of applications. Stopped, it leaves what was read; what is selected stays.
class ReadingWork final : public LongWork {
 public:
  explicit ReadingWork(SelectedReading& reading) : m_reading(reading) {}
  bool DoPart() override { return m_reading.ReadNext(); }
  std::optional<int> Progress() const override {
    return Thousandths(m_reading.Done(), m_reading.Count());
  }

 private:
  SelectedReading& m_reading;
};

// Finish on one machine: gives the document each application, and puts it in force. It ends at the
// first one for which the machine gives no handle, because it would say the same for each.
class ConfiguringWork final : public LongWork {
 public:
  // Borrows both.
  ConfiguringWork(CConfigDoc& document, ChosenApps& apps) : m_document(document), m_apps(apps) {}
  bool DoPart() override;
  std::optional<int> Progress() const override { return Thousandths(m_done, m_apps.size()); }
  std::size_t Done() const { return m_done; }

 private:
  trace_App_i* Add(const std::string& name);
  bool FreeHandle();

  CConfigDoc& m_document;
  ChosenApps& m_apps;
  std::size_t m_done = 0;
  bool m_freed = false;
};
