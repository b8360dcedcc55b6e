// A list of a file of "one", "two", "three" and as many more as wanted, with the commands of marks.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "shell/marks/mark_commands.h"
#include "support/fake_row_list.h"
#include "support/noted_file.h"

class MarksTest : public testing::Test {
 protected:
  MarksTest() {
    SetSettingsFile(m_file.m_directory.File("settings.ini"));
    m_view.OnInitialUpdate();
  }
  ~MarksTest() override { SetSettingsFile(""); }

  DocNotes& Notes() { return m_file.m_document.Notes(); }
  FakeRowList& List() { return static_cast<FakeRowList&>(m_view.List()); }
  void Focus(int row) {
    List().SetItemState(-1, 0, kRowFocused | kRowSelected);
    List().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }
  void Select(int row) { List().SetItemState(row, kRowSelected, kRowSelected); }
  int Focused() { return List().NextItem(-1, kRowFocused); }
  // "0:3 2:1": numbers and colours.
  std::string Marks() {
    std::string all;
    for (const auto& [number, record] : Notes().Notes().Records())
      all += (all.empty() ? "" : " ") + std::to_string(number) + ":" +
             std::to_string(Notes().Notes().Of(record).colour);
    return all;
  }

  NotedFile m_file{3};
  CTraceView m_view{m_file.m_document,
                    [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); }};
  std::string m_said = "nothing";
  MarkCommands m_commands{m_file.m_host, [this] { return &m_view; },
                          [this](const std::string& text) { m_said = text; }};
};
