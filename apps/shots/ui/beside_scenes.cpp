#include "beside_scenes.h"

#include "docview/commands/command_ids.h"
#include "shell/tessera_app.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

void BesideScenes::Details() {
  const auto run = [this](unsigned command) {
    m_tessera.Frame()->OnCommand(command);
    m_scenes.Settle();
  };
  run(ID_VIEW_DETAILS);
  m_scenes.Save(m_scenes.Window(), QStringLiteral("details-below"));
  run(ID_VIEW_BESIDERIGHT);
  m_scenes.Save(m_scenes.Window(), QStringLiteral("details-right"));
  run(ID_VIEW_BESIDERIGHT);
  run(ID_VIEW_DETAILS);
}

void BesideScenes::Hits() {
  const auto run = [this](unsigned command) {
    m_tessera.Frame()->OnCommand(command);
    m_scenes.Settle();
  };
  FindSettings.searchText = "order";
  RegexPrepare(FindSettings.searchText.c_str(), 1, 1, 0, 0);
  run(ID_EDIT_LISTHITS);
  run(ID_EDIT_FINDNEXT);
  run(ID_EDIT_FINDNEXT);
  m_scenes.Save(m_scenes.Window(), QStringLiteral("hits"));
  run(ID_EDIT_LISTHITS);
  FindSettings = {};
}
