// What the user has chosen in the wizard, before any of it goes to a machine.
//
// Shape    A table of machines by name; each has a table of applications, each of these a table of
//          traces. All are sorted by the bytes of their keys, so names that differ in case are two.
// Owner    The tables hold counted references to connections and applications. Two machines may
//          share them, when all machines are configured the same.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "quor/client/trace_config.h"

struct WizTrace {
  static constexpr std::uint16_t kNotLookedUp = TRC_NO_TRACE_ID;
  static constexpr std::uint32_t kNotRead = 0xFFFFFFFF;

  std::uint16_t m_nId = kNotLookedUp;
  std::uint32_t m_nSettings = kNotRead;
};

// By component, then by category.
using WizTraces = std::map<std::pair<std::string, std::string>, WizTrace>;

struct WizApp {
  QuorPtr<trace_App_i> m_app;  // null until the application was chosen
  WizTraces m_traces;
  bool m_bSelected = false;
  bool m_bUnsent = false;  // m_app is that of an open window and has changes that were not taken
};

using WizApps = std::map<std::string, WizApp>;

struct WizMachine {
  QuorPtr<trace_Config_i> m_pConfig;
  WizApps m_apps;
  std::string m_strConfigFile;  // the .tcf file that filled m_apps; empty: none
};

using WizMachines = std::map<std::string, WizMachine>;

// A position in one of these tables. It is kept by its key, so it may be asked after the table was
// emptied or replaced, and is then at the end unless the new table has the same key.
template <class Table>
class WizPlace {
 public:
  using Iterator = typename Table::iterator;

  // `at` may be the table's end.
  void Set(Table& table, Iterator at) {
    m_none = at == table.end();
    m_key = m_none ? std::string() : at->first;
  }
  Iterator In(Table& table) const { return m_none ? table.end() : table.find(m_key); }

 private:
  bool m_none = true;
  std::string m_key;
};
