// The program around the wizard: real templates over fake windows, machines without processes, and
// a monitor that is only noted.
//
// Shape    The log has the lines of fake_frame.h for configuration windows ("config ..."), "open
//          FILE" for a trace file, "not opened FILE", and "monitor".
// Owner    Host and log outlive the program; the program owns the machines.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "base/text.h"
#include "quor/client/trace_thread.h"
#include "settings/globals.h"
#include "support/fake_frame.h"
#include "support/fake_machine.h"
#include "wizard/wizard_program.h"

class FakeTraceFileDoc final : public CDocument {
 public:
  FakeTraceFileDoc(Host& host, FrameLog& log) : CDocument(host), m_log(log) {}
  bool OnOpenDocument(const std::string& path) override {
    m_log.Add("open " + path);
    return path.find("bad") == std::string::npos;
  }

 private:
  FrameLog& m_log;
};

class FakeWizardProgram final : public WizardProgram {
 public:
  FakeWizardProgram(Host& host, FrameLog& log) : m_host(host), m_log(log), m_app(host, log) {
    m_client.connect = [this](const std::string& name, std::string* why) {
      const auto machine = Find(name);
      return machine == m_machines.end() ? nullptr : machine->second.Connect(name, why);
    };
    m_client.open = [this](const std::string& name, const std::string& app) {
      const auto machine = Find(name);
      return machine == m_machines.end() ? nullptr : machine->second.Open(app, nullptr);
    };
    m_configs = m_app.AddDocTemplate(
        Template(131, "\n\nTrace Config\nTrace Config Files (*.tcf)\n.tcf\n\n", "config",
                 [this] { return std::make_unique<CConfigDoc>(m_host, m_client); }));
    m_files = m_app.AddDocTemplate(
        Template(129, "\n\nTrace File\nTrace Files (*.trc)\n.trc\n\n", "file",
                 [this] { return std::make_unique<FakeTraceFileDoc>(m_host, m_log); }));
  }
  // No document asks at the end.
  ~FakeWizardProgram() {
    g_quickClose = true;
    m_app.CloseAllDocuments();
    g_quickClose = false;
  }

  CMultiDocTemplate* ConfigTemplate() const override { return m_configs; }
  CMultiDocTemplate* FileTemplate() const override { return m_files; }
  const ConfigClient& Client() const override { return m_client; }
  void OpenLocalMonitor() override { m_log.Add("monitor"); }
  void NoteNotOpened(const std::string& path) override { m_log.Add("not opened " + path); }

  // A machine of the network. This one is "localhost", and answers to its host name too.
  FakeMachine& Machine(const std::string& name) { return m_machines[name]; }
  std::map<std::string, FakeMachine>& Machines() { return m_machines; }
  CConfigDoc& OpenConfig(const std::string& machine) {
    auto& config = static_cast<CConfigDoc&>(*m_configs->OpenDocumentFile(nullptr));
    config.ConnectToMachine(machine);
    return config;
  }
  CConfigDoc& Config(std::size_t place) const {
    return static_cast<CConfigDoc&>(*m_configs->Documents().at(place));
  }
  std::size_t Configs() const { return m_configs->Documents().size(); }

  ConfigClient m_client;

 private:
  // Machines answer to their names in any case.
  std::map<std::string, FakeMachine>::iterator Find(const std::string& name) {
    const bool here = CompareIgnoringCase(name, _trc_GetHostName()) == 0;
    return std::find_if(m_machines.begin(), m_machines.end(), [&](const auto& machine) {
      return CompareIgnoringCase(machine.first, here ? "localhost" : name) == 0;
    });
  }
  std::unique_ptr<CMultiDocTemplate> Template(
      unsigned resource, const char* docString, const char* view,
      std::function<std::unique_ptr<CDocument>()> document) {
    CMultiDocTemplate::Makers makers;
    makers.document = std::move(document);
    makers.frame = [this] { return std::make_unique<CMDIChildWnd>(m_app.m_frame); };
    makers.view = [this, view](CDocument& each) {
      return std::make_unique<ProbeView>(each, m_log, view);
    };
    return std::make_unique<CMultiDocTemplate>(resource, docString, m_app.MainFrame(),
                                               std::move(makers));
  }

  Host& m_host;
  FrameLog& m_log;
  std::map<std::string, FakeMachine> m_machines;  // outlive the documents
  FakeApp m_app;
  CMultiDocTemplate *m_configs = nullptr, *m_files = nullptr;
};
