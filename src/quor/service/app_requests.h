// The requests of one client about applications and their settings.
//
// Owner    Holds the client's open handles until Close.
// Errors   A request that cannot be served is answered with an error.
// Threads  The service's one thread.
#pragma once

#include <map>
#include <set>

#include "quor/protocol/quor.pb.h"
#include "quor/service/app_view.h"
#include "quor/traced/apps.h"

// Answers with an error. Always false.
bool FailRequest(quor::wire::Response* response, quor::wire::ErrorCode code,
                 const std::string& text);

class AppRequests {
 public:
  static constexpr std::size_t kHandlesMax = 1024;

  // `pid`: of a client on this machine; 0 for another.
  AppRequests(Apps& apps, AppView view, std::uint32_t pid)
      : m_apps(apps), m_view(std::move(view)), m_pid(pid) {}
  void Close();
  bool Serve(const quor::wire::Request& request, quor::wire::Role role,
             quor::wire::Response* response);

 private:
  void List(quor::wire::Response* response);
  void ListFailingSinks(quor::wire::Response* response);
  bool Open(const std::string& name, quor::wire::Response* response);
  bool CloseOne(const std::string& name, quor::wire::Response* response);
  bool Submit(const quor::wire::Submit& submit, quor::wire::Response* response);
  bool Keep(const quor::wire::Keep& keep, quor::wire::Response* response);
  bool Forget(const std::string& name, quor::wire::Response* response);
  bool Fill(const std::string& name, quor::wire::Response* response);
  void FillTraces(const CatalogueApp& app, const AppStart& start, quor::wire::App* to);
  std::optional<std::string> KeyOf(const std::string& name, bool isNew,
                                   quor::wire::Response* response) const;
  CatalogueApp* Known(const std::string& name, quor::wire::Response* response);
  CatalogueApp* Enter(const std::string& name, quor::wire::Response* response);

  Apps& m_apps;
  const AppView m_view;
  const std::uint32_t m_pid;
  // By the name that the client wrote: what it meant stays, whatever else begins to run.
  std::multimap<std::string, std::string> m_handles;
};
