// The document of a configuration window: the connection with the configuration service of one
// machine, and the list of applications that the user configures there.
//
// A change of an application goes to the machine at once, through its handle. The document keeps
// the handles, in the order in which they were added, and saves the list as a .tcf file.
//
// Owner    Holds counted references to the connection and the list. The connection stays until the
//          document's end.
// Errors   Shown where they happen; the operations report by bool or null.
// Threads  Interface thread. Each request to the machine blocks for at most 5 seconds, under a wait
//          cursor. An operation may make several.
#pragma once

#include <functional>
#include <set>
#include <string>

#include "docview/document.h"
#include "quor/client/trace_config.h"

// How a document reaches machines. Tests have machines of their own.
struct ConfigClient {
  std::function<trace_Config_i*(const std::string& host, std::string* why)> connect =
      [](const std::string& host, std::string* why) { return trace_Config_i::Create(host, why); };
  std::function<trace_App_i*(const std::string& host, const std::string& app)> open =
      [](const std::string& host, const std::string& app) {
        return trace_App_i::Create(host, app);
      };
};

class CConfigDoc : public CDocument {
 public:
  // Sent when the list of applications has changed.
  static constexpr unsigned kHintApplications = 1002;

  explicit CConfigDoc(Host& host, ConfigClient client = {});

  // False, with a box: no connection can be made. WhyNotConnected then has the reason.
  bool ConnectToMachine(const QuorStr::String_t& machine);
  const std::string& WhyNotConnected() const { return m_whyNotConnected; }
  QuorStr::String_t GetMachineName() const;  // "" without a connection
  const QuorPtr<trace_Config_i>& GetConfig() const { return m_pConfig; }
  const QuorPtr<trace_AppList_i>& GetApplications() const { return m_pAppList; }
  // False also while a connection that broke is not restored yet, or the machine does not answer.
  bool IsLive() const { return m_pConfig && m_pConfig->IsUp(); }

  // A handle at the end of the list; nothing is submitted. Null, with a box: the machine cannot be
  // reached, and nothing was added.
  trace_App_i* AddApplication(const std::string& name);
  // The same without a box.
  trace_App_i* TryAddApplication(const std::string& name);
  // Takes the handle off the list. Asks whether traces that are on shall be turned off; false when
  // the user cancels, or the handle is not in the list.
  bool RemoveApplication(trace_App_i* app);

  // The property pages report whether the machine has taken what they submitted last.
  void NoteSubmit(const trace_App_i& app, bool taken);
  // The applications whose last changes the machine has not taken. One that left the list since
  // stays among them until it is added again.
  const std::set<std::string>& NotInForce() const { return m_notInForce; }
  // The same for applications whose traces the user wanted to turn off when they left the list.
  const std::set<std::string>& MayBeOn() const { return m_mayBeOn; }

  // The title names the machine, whatever the file is.
  void SetPathName(const std::string& path, bool addToRecent) override;
  bool IsModified() const override { return CDocument::IsModified(); }
  void SetModifiedFlag(bool modified) override { CDocument::SetModifiedFlag(modified); }
  // Removes all applications with RemoveApplication's questions, or without any in a quick close.
  void DeleteContents() override;
  // Asks for the machine when there is no connection yet.
  bool OnOpenDocument(const std::string& path) override;
  bool OnSaveDocument(const std::string& path) override;
  // A quick close turns all traces off instead, and saves nothing.
  bool SaveModified() override;

 private:
  bool Connect(const std::string& machine);
  bool ConnectForOpen();
  bool ReadFile(std::istream& in);
  void ShowError(const char* text);
  bool MayRemove(trace_App_i& app);
  void TellWhatMayBeOn();
  bool TurnOff(trace_App_i& app);

  const ConfigClient m_client;
  std::string m_whyNotConnected;
  QuorPtr<trace_Config_i> m_pConfig;
  const QuorPtr<trace_AppList_i> m_pAppList;
  std::set<std::string> m_notInForce, m_mayBeOn;
};
