// The configuration service of one machine, as its clients see it.
//
// Owner    Counted references (base/quor_ptr.h); Create returns an object without a reference.
// Errors   Create returns null when the service cannot be reached within its deadline of 5 seconds.
//          Other calls return a bool. Getters return the local state, including changes that were
//          not submitted.
// Threads  Interface thread; calls block until the machine has answered or the deadline has passed.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "base/quor_ptr.h"
#include "base/quor_str.h"
#include "quor/client/app_notes.h"

// Other values may come from a newer service, and are kept.
enum trc_SinkTypes_e : unsigned { trc_SinkFile = 0, trc_SinkSocket = 1 };

// Bits of a settings word.
enum : unsigned {
  TRC_SET_INFO = 0x0001,
  TRC_SET_WARN = 0x0002,
  TRC_SET_ERROR = 0x0004,
  TRC_SET_DEVELOPER = 0x0008,
  TRC_SET_VERBOSE = 0x0010,
  TRC_SET_LOCATION = 0x0100,
  TRC_SET_STACK = 0x0200,
};
constexpr unsigned TRC_NO_TRACE_ID = 0xFFFF;

struct trace_Category_t {
  std::string name;  // UTF-8
  unsigned traceId;
};
struct trace_Component_t {
  std::string name;
  std::list<trace_Category_t> categories;
};

class trace_Config_i : public QuorRef::Ref_t {
 public:
  // "" and "localhost" mean this machine, "name:port" another. `why` gets the reason for a null.
  static trace_Config_i* Create(const std::string& host, std::string* why = nullptr);
  // Also with a certificate that allows only to monitor: good for GetAppList alone.
  static trace_Config_i* CreateToList(const std::string& host, std::string* why = nullptr);
  virtual const std::string& GetHostName() const = 0;  // as given
  // Those that run and those with an open handle. Asks at each call; empty without an answer.
  virtual const std::list<std::string>& GetAppList() const = 0;
  // Additions, behind the operations of the interface. How many ran at the last GetAppList.
  virtual unsigned GetInstances(const std::string& app) const = 0;
  // Its account as of the last GetAppList; empty where a service is for one account.
  virtual std::string GetAccount(const std::string& /*app*/) const { return {}; }
  // Was the last GetAppList answered? If not, its list is empty.
  virtual bool WasAnswered() const = 0;
  // False while a broken connection is not restored yet, and while the service is silent.
  virtual bool IsUp() const = 0;
  // A question had no answer in time, and the service has not been heard since.
  virtual bool IsSilent() const = 0;
  // What waits for applications that did not run at the last GetAppList.
  virtual std::vector<trace_Waiting_t> GetWaiting() const { return {}; }
  // Of those that ran then. A machine tells them to who may also configure it.
  virtual std::vector<trace_FailingSink_t> GetFailingSinks() const { return {}; }
  // Keeps rules (quor/settings/settings_text.h) for all later instances of an application, and puts
  // them in force; takes back what is kept or waits. False and a reason: refused, or no answer.
  virtual bool Keep(const std::string& /*app*/, const std::string& /*rules*/,
                    std::string* /*why*/) {
    return false;
  }
  virtual bool ForgetApp(const std::string& /*app*/, std::string* /*why*/) { return false; }
};

class trace_App_i : public QuorRef::Ref_t {
 public:
  // Works for an application that is not registered yet: empty trace map, sink "localhost".
  static trace_App_i* Create(const std::string& host, const std::string& app,
                             std::string* why = nullptr);
  // A look that opens no handle there, so that nothing changes on the machine. Submit sends only
  // what another handle or an instance allows. Unknown application: as above.
  static trace_App_i* Look(const std::string& host, const std::string& app,
                           std::string* why = nullptr);
  virtual const std::string& GetAppName() const = 0;
  virtual const std::list<trace_Component_t>& GetTraceMap() const = 0;  // stable until Refresh
  virtual unsigned GetSettings(unsigned traceId) const = 0;
  virtual void SetSettings(unsigned traceId, unsigned settings) = 0;  // local; unknown id ignored
  virtual void SetAllTraces(unsigned settings) = 0;                   // local
  // Low 16 bits TRC_NO_TRACE_ID: no such trace.
  virtual unsigned GetTraceId(const std::string& component, const std::string& category) const = 0;
  virtual void GetSink(trc_SinkTypes_e& type, std::string& name, std::string& options) const = 0;
  virtual void SetSink(trc_SinkTypes_e type, const std::string& name,
                       const std::string& options) = 0;
  virtual bool Submit() const = 0;  // sink and settings together
  virtual bool Refresh() = 0;       // discards local changes and reads again
  // Additions, behind the operations of the interface. What the environments of the running
  // instances gave them (QUOR_SETTINGS, QUOR_SINK): is it what GetSettings or GetSink answers?
  virtual bool IsFromStart(unsigned /*traceId*/) const { return false; }
  virtual bool IsSinkFromStart() const { return false; }
  virtual std::string WhySinkFails() const { return {}; }  // its machine cannot be reached
  virtual std::vector<trace_StartNote_t> GetStartNotes() const { return {}; }
  virtual std::string GetKept() const { return {}; }  // rules for all later instances
};

class trace_AppList_i : public QuorRef::MTRef_t {
 public:
  static trace_AppList_i* Create();
  std::list<QuorPtr<trace_App_i>> m_apps;
};

// "Info, Warn, Stack": the names of the set bits in the order of the table, then all bits without a
// name as one number: "Warn, 0x0020". "Off" for 0, and for nothing else.
QuorStr::String_t SettingsToLabel(unsigned settings);
