// An application with one template of logging documents, frames and views.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "docview/commands/command_ids.h"
#include "docview/doc_template.h"
#include "support/fake_frame.h"
#include "support/recording_host.h"

class ProbeDoc : public CDocument {
 public:
  ProbeDoc(Host& host, FrameLog& log) : CDocument(host), m_log(log) {}
  ~ProbeDoc() override { m_log.Add("document gone"); }
  bool OnNewDocument() override { return CDocument::OnNewDocument() && !s_refuse; }
  bool OnOpenDocument(const std::string& path) override {
    m_log.Add("open " + path);
    return !s_refuse;
  }
  bool OnSaveDocument(const std::string& path) override {
    m_log.Add("save " + path);
    return !s_refuse;
  }
  void DeleteContents() override {
    m_log.Add("delete contents");
    UpdateAllViews(nullptr, 1002);
  }
  using CCmdTarget::MapCommand;
  using CCmdTarget::MapUpdate;

  static inline bool s_refuse = false;

 private:
  FrameLog& m_log;
};

class ProbeFrame : public CMDIChildWnd {
 public:
  ProbeFrame(CMDIFrameWnd& parent, FrameLog& log) : CMDIChildWnd(parent), m_log(log) {}
  ~ProbeFrame() override { m_log.Add("frame gone"); }
  void OnCreate() override { m_log.Add("frame create"); }
  void OnDestroy() override { m_log.Add("frame destroy"); }
  using CCmdTarget::MapCommand;

 private:
  FrameLog& m_log;
};

class DocviewTest : public testing::Test {
 protected:
  DocviewTest() : m_app(m_host, m_log) { ProbeDoc::s_refuse = false; }
  ~DocviewTest() override { ProbeDoc::s_refuse = false; }

  std::unique_ptr<CMultiDocTemplate> MakeTemplate(unsigned resource, std::string docString) {
    CMultiDocTemplate::Makers makers;
    makers.document = [this] { return std::make_unique<ProbeDoc>(m_host, m_log); };
    makers.frame = [this] { return std::make_unique<ProbeFrame>(m_app.m_frame, m_log); };
    makers.view = [this](CDocument& document) {
      return std::make_unique<ProbeView>(document, m_log, "view" + std::to_string(++m_views));
    };
    return std::make_unique<CMultiDocTemplate>(resource, std::move(docString), m_app.MainFrame(),
                                               std::move(makers));
  }
  CMultiDocTemplate& AddTemplate() {
    return *m_app.AddDocTemplate(MakeTemplate(129, kTraceFileString));
  }
  static ProbeView& ViewOf(CMDIChildWnd& frame) {
    return static_cast<ProbeView&>(*frame.Views().front());
  }
  CMDIChildWnd& FrameOf(CDocument& document, std::size_t index = 0) {
    return static_cast<CMDIChildWnd&>(*document.Frames().at(index));
  }
  // A second window on the document.
  CMDIChildWnd& NewWindow(CMultiDocTemplate& docTemplate, CDocument& document) {
    CMDIChildWnd* const frame = docTemplate.CreateNewFrame(document);
    docTemplate.InitialUpdateFrame(*frame, document, true);
    return *frame;
  }
  // The lines that `act` adds to the log.
  std::string ReportedBy(const std::function<void()>& act) {
    m_log.Clear();
    act();
    return m_log.Reported();
  }

  static constexpr char kTraceFileString[] =
      "\n\nTrace File\nTrace Files (*.trc)\n.trc\nTraceFile\nTrace File";
  static constexpr char kConfigString[] =
      "\n\nTrace Config\nTrace Config Files (*.tcf)\n.tcf\nTraceConfigFile\nTrace Config File";

  RecordingHost m_host;
  FrameLog m_log;
  int m_views = 0;
  FakeApp m_app;
};
