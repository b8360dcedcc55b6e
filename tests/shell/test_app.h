// The application in the form that tests start.
#pragma once

#include <memory>
#include <utility>

#include "documents/trace_doc.h"
#include "docview/commands/command_ids.h"
#include "shell/child_frame.h"
#include "shell/menus/resource_ids.h"
#include "shell/tessera_app.h"
#include "support/fake_frame.h"

// The application with stand-ins for monitors and for the wizard.
class TestApp : public CTesseraApp {
 public:
  TestApp(Host& host, ShellFaces& faces, FrameLog& log) : CTesseraApp(host, faces), m_log(log) {}

  CMultiDocTemplate& HoldMonitorTemplate() {
    m_monitorTemplate = MakeTemplate(
        IDR_MONITOR, "\nTraceRealtimeDoc\nTrace File\nTrace Files (*.trc)\n.trc\n\n", "monitor");
    return *m_monitorTemplate;
  }
  void MapWizard() {
    MapCommand(ID_FILE_WIZARD, [this] { m_log.Add("wizard"); });
  }

 private:
  std::unique_ptr<CMultiDocTemplate> MakeTemplate(unsigned resource, const char* docString,
                                                  const char* viewName) {
    CMultiDocTemplate::Makers makers;
    makers.document = [this] { return std::make_unique<CTraceDoc>(GetHost()); };
    makers.frame = [this] { return std::make_unique<CTraceChildFrame>(*Frame()); };
    makers.view = [this, viewName](CDocument& document) {
      return std::make_unique<ProbeView>(document, m_log, viewName);
    };
    return std::make_unique<CMultiDocTemplate>(resource, docString, MainFrame(), std::move(makers));
  }
  FrameLog& m_log;
};
