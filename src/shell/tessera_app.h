// The application: start and end, templates, the commands that belong to no document, and the
// broadcast of changed options.
//
// Errors   InitInstance false ends the program without a further message.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "config/document/config_doc.h"
#include "documents/trace_file_doc.h"
#include "documents/trace_realtime_doc.h"
#include "docview/win_app.h"
#include "listview/source/open_source.h"
#include "shell/faces.h"
#include "shell/main_frame.h"
#include "wizard/wizard_program.h"

class CTraceView;

class CTesseraApp : public CWinApp, public WizardProgram {
 public:
  CTesseraApp(Host& host, ShellFaces& faces);
  ~CTesseraApp() override;

  // `arguments` without the program's name.
  bool InitInstance(const std::vector<std::string>& arguments);
  // Monitors first, source windows last, because the list of registered templates has neither.
  bool SaveAllModified() override;
  void CloseAllDocuments() override;
  void OnRecentFilesChanged() override;
  // In the status bar, as soon as the windows that close or open now have done so.
  void ShowNotice(const std::string& notice) override;
  // Says in the status bar why a file did not open: what no message box has said.
  CDocument* OpenDocumentFile(const std::string& path) override;
  void NoteNotOpened(const std::string& path) override;
  // Opens it without a message: returns the reason; empty on success.
  std::string TryOpen(const std::string& path);
  // Why the last attempt to open this file has failed.
  std::string WhyNotOpened(const std::string& path) const;

  ShellFaces& Faces() const { return m_faces; }
  CMultiDocTemplate* FileTemplate() const override { return m_fileTemplate; }
  CMultiDocTemplate* MonitorTemplate() const { return m_monitorTemplate.get(); }
  CMultiDocTemplate* ConfigTemplate() const override { return m_configTemplate; }
  CSourceTemplate* SourceTemplate() const { return m_sourceTemplate.get(); }
  CMainFrame* Frame() const { return m_frame.get(); }

  // Shows a monitor of this machine: an open one for "localhost" or the host name is kept, else a
  // new one is opened for the host name.
  void OpenLocalMonitor() override;
  const ConfigClient& Client() const override { return m_configClient; }
  // Opens a monitor's window. For a machine that cannot be reached it opens none, shows no message
  // and returns false.
  bool OpenMonitor(const std::string& machine);
  // Opens the configuration of a machine. For one that cannot be reached it opens none and returns
  // false; the document shows its message, and the status bar the reason.
  bool OpenConfig(const std::string& machine);
  // How monitors and configurations connect; tests replace these.
  CTraceRealtimeDoc::Connector m_connectMonitor = CTraceRealtimeDoc::ConnectToTraceService;
  ConfigClient m_configClient;
  // The parameters for loading trace files from now on.
  TraceLoadSetup m_loads;

  // Set it to false before InitInstance if something will be shown that the arguments do not name,
  // so that no wizard opens over it.
  bool m_offerWizard = true;

  static const char kVersionLine[];

 protected:
  // Not registered, so that no path ever opens a monitor.
  std::unique_ptr<CMultiDocTemplate> m_monitorTemplate;

 private:
  void MapCommands();
  bool IsConfiguration(const std::string& path) const;
  // Why the file cannot be read; empty when it can.
  std::string WhyBadFile(const std::string& path) const;
  void LoadRecentFiles();
  void MakeTemplates();
  std::unique_ptr<CMultiDocTemplate> MakeTraceTemplate(unsigned resource, const char* docString,
                                                       CMultiDocTemplate::Makers makers);
  void MakeConfigTemplate();
  bool MakeFrame();
  void PostWizard();
  void OnWizard();
  void OnNewMonitor();
  void OnNewConfig();
  CTraceView* FrontList() const;
  void OnOptions();
  void OnColours();
  void MapTimeColumns();
  void OnTraceOptions();  // WM_TRACE_OPTIONS: hint 1001 to all views
  void OnNewWindow();
  void ShowInStatusBar(const std::string& notice, const std::string& details);

  ShellFaces& m_faces;
  std::unique_ptr<CMainFrame> m_frame;
  CMultiDocTemplate* m_fileTemplate = nullptr;
  CMultiDocTemplate* m_configTemplate = nullptr;
  std::unique_ptr<CSourceTemplate> m_sourceTemplate;  // not registered, like that of monitors
};
