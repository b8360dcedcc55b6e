// The template of source windows in an application without windows.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "documents/trace_doc.h"
#include "docview/commands/command_ids.h"
#include "listview/source/locate_wait.h"
#include "listview/source/open_source.h"
#include "listview/source/source_doc.h"
#include "listview/source/source_map.h"
#include "listview/source/source_view.h"
#include "settings/globals.h"
#include "support/fake_frame.h"
#include "support/fake_rich_edit.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

class SourceTest : public testing::Test {
 protected:
  SourceTest() {
    g_sourceMap.clear();
    g_quickClose = false;
  }
  ~SourceTest() override {
    m_template.reset();
    g_sourceMap.clear();
    g_quickClose = false;
  }

  std::string File(const std::string& name, const std::string& text = "one\ntwo\nthree\n") {
    return m_directory.File(name, text);
  }
  // Document number `index`, with its real class.
  CSourceDoc& Doc(std::size_t index = 0) {
    return static_cast<CSourceDoc&>(*m_template->Documents().at(index));
  }
  CSourceView& View(std::size_t index = 0) {
    return static_cast<CSourceView&>(*Doc(index).Views().at(0));
  }
  FakeRichEdit& Edit(std::size_t index = 0) {
    return static_cast<FakeRichEdit&>(View(index).Edit());
  }
  CMDIChildWnd& Frame(std::size_t index = 0) {
    return static_cast<CMDIChildWnd&>(*View(index).GetParentFrame());
  }
  std::size_t Open() const { return m_template->Documents().size(); }
  bool Enabled(unsigned id) {
    CCmdUI ui(id, true, false);
    UpdateCommand(m_app.m_frame, ui);
    return ui.IsEnabled();
  }

  TempDir m_directory;
  RecordingHost m_host;
  FrameLog m_log;
  FakeApp m_app{m_host, m_log};
  std::unique_ptr<CSourceTemplate> m_template = std::make_unique<CSourceTemplate>(
      m_host, m_app.MainFrame(),
      [](RichEditOwner& owner) { return std::make_unique<FakeRichEdit>(owner); });
};
