#include "beside_scenes.h"

#include "docview/commands/command_ids.h"
#include "shell/tessera_app.h"

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
