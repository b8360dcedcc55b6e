// The Sink page of an application's property sheet: where the application sends its traces.
//
// Owner    Borrows document, application and the page before it.
// Errors   Message boxes, which keep the user on the page. A server sink is not checked.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/document/config_doc.h"
#include "config/pages/sink_options.h"
#include "config/pages/submit_result.h"
#include "docview/sheet/property_page.h"

class CAppTraceCfgPropertyPage;

class CAppSinkCfgPropertyPage : public CPropertyPage {
 public:
  static constexpr unsigned kId = 136;
  // Controls.
  static constexpr unsigned kServer = 0x3121, kFile = 0x3122, kMachine = 0x3123, kBrowse = 0x3124,
                            kFileName = 0x3125, kFlush = 0x3126, kHistoricFiles = 0x3127,
                            kMaxSize = 0x3128;
  static constexpr char kNoLimit[] = "<none>";
  // What the combo boxes offer; others can be typed.
  static const std::vector<std::string>& HistoricFilesChoices();
  static const std::vector<std::string>& MaxSizeChoices();

  explicit CAppSinkCfgPropertyPage(Host& host);

  void LoadFromApplication(CConfigDoc* doc, trace_App_i* app);
  // The page whose OnOK runs before: a machine that left it without an answer is not asked again,
  // so that the user waits once.
  void FollowPage(const CAppTraceCfgPropertyPage* page) { m_before = page; }

  bool OnKillActive() override;
  void OnOK() override;
  // The radio buttons and the button beside the machine's field.
  void OnTraceServer() { ChooseSink(kToServer); }
  void OnFile() { ChooseSink(kToFile); }
  void OnBrowse();
  // The user has changed a control.
  void OnEdit() { SetModified(); }

  // Of a sink of neither kind all controls can be used.
  bool MachineEnabled() const { return m_nSinkType != kToFile; }
  bool FileEnabled() const { return m_nSinkType != kToServer; }
  // Of the last OnOK; nothing before the first.
  std::optional<SubmitResult> Submitted() const { return m_submitted; }

  // What the controls show.
  std::string m_strFileName, m_strMachine;
  int m_nSinkType = -1;  // the radio buttons count in the reverse order of trc_SinkTypes_e
  int m_bForceFlush = 0;
  std::string m_strHistoricFiles, m_strMaxSize;

  CConfigDoc* m_pDoc = nullptr;
  trace_App_i* m_pApp = nullptr;

 private:
  static constexpr int kToServer = 0, kToFile = 1;
  void ChooseSink(int sink);
  void LoadFile(const std::string& name, const std::string& options);
  void LoadServer(const std::string& name);
  bool CheckExtension();
  bool CheckHistoricFiles();
  bool CheckMaxSize();
  bool Refuse(const char* text, unsigned control);
  SinkPageOptions Options() const;

  const CAppTraceCfgPropertyPage* m_before = nullptr;
  std::optional<SubmitResult> m_submitted;
};
