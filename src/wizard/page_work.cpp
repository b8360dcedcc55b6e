#include "wizard/page_work.h"

#include <algorithm>

#include "config/document/config_doc.h"
#include "settings/globals.h"
#include "wizard/tables/configure_app.h"

// The wizard's handles are given back one by one: with as many again a machine would refuse the
// last ones.
bool ConfiguringWork::DoPart() {
  if (m_done == m_apps.size() || g_quickClose) return true;
  ChosenApp& chosen = m_apps[m_done];
  trace_App_i* const app = Add(chosen.name);
  if (!app) return true;
  m_document.NoteSubmit(*app, ConfigureApp(chosen, *app));
  chosen.handle = nullptr;
  // A machine that is silent now is asked for nothing more, so no box has to open for the rest.
  return ++m_done == m_apps.size() || m_document.GetConfig()->IsSilent();
}

trace_App_i* ConfiguringWork::Add(const std::string& name) {
  trace_App_i* const app = m_document.TryAddApplication(name);
  return app || !FreeHandle() ? app : m_document.TryAddApplication(name);
}

// A machine whose handles are all the wizard's has none for the window. One is given back early:
// that of an application that runs, which keeps its settings without any handle. With the last one
// there is a handle for all that come before it, and then for itself.
bool ConfiguringWork::FreeHandle() {
  if (m_freed || !m_document.IsLive()) return false;
  m_freed = true;
  const trace_Config_i& machine = *m_document.GetConfig();
  machine.GetAppList();
  const auto app = std::find_if(m_apps.rbegin(), m_apps.rend(), [&machine](const ChosenApp& each) {
    return each.handle && machine.GetInstances(each.name) > 0;
  });
  if (app == m_apps.rend()) return false;
  app->handle = nullptr;
  return true;
}
