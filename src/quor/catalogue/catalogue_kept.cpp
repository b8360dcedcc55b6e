// Settings that are kept for all later instances of an application.
#include "quor/catalogue/catalogue.h"
#include "quor/catalogue/catalogue_store.h"

std::uint32_t Catalogue::FirstSettings(const CatalogueApp& app, const CatalogueTrace& trace) const {
  return app.kept.Of(trace.component, trace.category).value_or(m_defaultSettings);
}

bool Catalogue::Keep(CatalogueApp& app, const SettingsText& rules,
                     std::vector<std::uint32_t>* traces) {
  SettingsText sum = app.kept;
  sum.Add(rules);
  if (sum.Rules().size() > SettingsText::kRulesMax || sum.Written().size() > kKeptBytesMax)
    return false;
  app.kept = std::move(sum);
  for (std::uint32_t id = 0; id < app.traces.size(); ++id) {
    CatalogueTrace& trace = app.traces[id];
    if (!rules.Of(trace.component, trace.category)) continue;
    trace.settings = FirstSettings(app, trace);
    traces->push_back(id);
  }
  if (!m_store) return true;
  m_store->WriteKept(app);
  m_store->WriteSettings(app);
  return true;
}

bool Catalogue::ForgetWaiting(CatalogueApp& app) {
  if (app.kept.IsEmpty() && !app.prepared) return false;
  app.kept = {};
  if (m_store) m_store->WriteKept(app);
  // What is in force stays so for those who hold it, and ends with them.
  app.submitted = true;
  app.prepared = false;
  if (m_store) m_store->WriteSettings(app);
  StoreHolders(app);
  Release(app);
  return true;
}

std::vector<const CatalogueApp*> Catalogue::Waiting() const {
  std::vector<const CatalogueApp*> waiting;
  for (const auto& [name, app] : m_apps)
    if (app.Instances() == 0 && (app.prepared || !app.kept.IsEmpty())) waiting.push_back(&app);
  return waiting;
}
