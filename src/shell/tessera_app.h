// The application: start and stop, templates, the commands that belong to no document, and the
// broadcast of changed options.
//
// Errors   InitInstance false ends the program quietly; the words, if any, have been shown.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "documents/trace_file_doc.h"
#include "documents/trace_realtime_doc.h"
#include "docview/win_app.h"
#include "listview/source/open_source.h"
#include "shell/faces.h"
#include "shell/main_frame.h"

class CTesseraApp : public CWinApp {
 public:
  CTesseraApp(Host& host, ShellFaces& faces);
  ~CTesseraApp() override;

  // `arguments` without the program's name.
  bool InitInstance(const std::vector<std::string>& arguments);
  // Monitors first, source windows last: the registered templates hold neither.
  bool SaveAllModified() override;
  void CloseAllDocuments() override;
  void OnRecentFilesChanged() override;
  // Says in the status bar why a file did not open, where nothing else has said so.
  CDocument* OpenDocumentFile(const std::string& path) override;
  // The same without a word there: gives why it did not open, empty when it did.
  std::string TryOpen(const std::string& path);

  ShellFaces& Faces() const { return m_faces; }
  CMultiDocTemplate* FileTemplate() const { return m_fileTemplate; }
  CMultiDocTemplate* MonitorTemplate() const { return m_monitorTemplate.get(); }
  CMultiDocTemplate* ConfigTemplate() const { return m_configTemplate; }
  CSourceTemplate* SourceTemplate() const { return m_sourceTemplate.get(); }
  CMainFrame* Frame() const { return m_frame.get(); }

  // Shows a monitor of this machine: one that is open already to "localhost" or to the host name
  // stays as it is, else a new one is opened to the host name.
  void OpenLocalMonitor();
  // Opens a monitor's window; a machine that cannot be reached leaves none, without a word, and
  // gives false.
  bool OpenMonitor(const std::string& machine);
  // How monitors connect; a test puts a source of its own here.
  CTraceRealtimeDoc::Connector m_connectMonitor = CTraceRealtimeDoc::ConnectToTraceService;
  // How trace files opened from now on are loaded.
  TraceLoadSetup m_loads;

  // False before InitInstance: something is to be shown that the arguments do not name, so that no
  // wizard comes up over it.
  bool m_offerWizard = true;

  static constexpr char kVersionLine[] = "Tessera Version 3.1.0";

 protected:
  // Null while this program has no configurations. Their template is registered, the monitors' is
  // held apart: no path ever opens a monitor.
  CMultiDocTemplate* m_configTemplate = nullptr;
  std::unique_ptr<CMultiDocTemplate> m_monitorTemplate;

 private:
  void MapCommands();
  void LoadRecentFiles();
  void MakeTemplates();
  std::unique_ptr<CMultiDocTemplate> MakeTraceTemplate(unsigned resource, const char* docString,
                                                       CMultiDocTemplate::Makers makers);
  bool MakeFrame();
  void PostWizard();
  void OnNewMonitor();
  void OnOptions();
  void OnTraceOptions();  // WM_TRACE_OPTIONS: hint 1001 to all views
  void OnNewWindow();

  ShellFaces& m_faces;
  std::unique_ptr<CMainFrame> m_frame;
  CMultiDocTemplate* m_fileTemplate = nullptr;
  std::unique_ptr<CSourceTemplate> m_sourceTemplate;  // held apart, as that of the monitors
};
