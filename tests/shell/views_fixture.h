// A window over fakes whose view comes back: it writes files, opens and closes them, and tells what
// the window shows.
#pragma once

#include <string>

#include "listview/colours/active_colours.h"
#include "shell/child_frame.h"
#include "shell_fixture.h"
#include "views/stored_views.h"

class ViewsComeBack : public ShellTest {
 protected:
  ~ViewsComeBack() override { EXPECT_TRUE(UseColours({}, nullptr)); }

  // Traces "0", "1", ... in turn of two threads.
  std::string Write(const std::string& name, int traces = 10, const std::string& prefix = "") {
    TrcImage image;
    image.Name(1, "web").Name(2, "shop").Name(3, "812").Name(4, "main").Name(5, "worker");
    for (int i = 0; i < traces; ++i)
      image.Trace({.text = prefix + std::to_string(i),
                   .machine = 1,
                   .app = 2,
                   .time = PackTime(9, 41, i % 60, 0),
                   .pid = 3,
                   .tid = static_cast<NameId>(i % 2 ? 4 : 5)});
    return image.WriteTo(m_dir.File(name));
  }
  // Traces "0" of Net, "1" of Sql, "2" of Net ...; from the eleventh on of another component.
  std::string WriteComponents(const std::string& name, int traces = 10,
                              const std::string& other = "") {
    TrcImage image;
    image.Name(6, "Net").Name(7, "Sql");
    for (int i = 0; i < traces; ++i) {
      if (i == 10) image.Name(8, other);
      const int component = i >= 10 ? 8 : 6 + i % 2;
      image.Trace({.text = std::to_string(i), .component = static_cast<NameId>(component)});
    }
    return image.WriteTo(m_dir.File(name));
  }
  NameId IdOf(const std::string& component) {
    CTraceDoc& document = Child().ShownPane()->Document();
    for (const auto& [id, mark] : Merged().components)
      if (NameOf(document.m_names, id) == component) return id;
    ADD_FAILURE() << component;
    return 0;
  }
  CTraceFilter Merged() {
    CTraceFilter filter = Child().ShownPane()->m_filter;
    filter.MergeDocumentNames(Child().ShownPane()->Document());
    return filter;
  }
  int MarkOf(const std::string& component) { return Merged().components[IdOf(component)]; }
  // As OK of the filter dialog does.
  void Hide(const std::string& component) {
    CTraceFilter filter = Merged();
    filter.allTraces = filter.allComponents = 0;
    filter.components[IdOf(component)] = 0;
    ASSERT_TRUE(Child().ShownPane()->SetFilter(filter, true));
    Child().ShownPane()->m_filterChanged = true;
  }
  void OpenAgain() {
    Close();
    OpenFile();
  }
  void OpenFile() {
    ASSERT_TRUE(Open(m_path));
    Settle();
  }
  void Close() { ASSERT_TRUE(Frame().OnCommand(ID_FILE_CLOSE)); }
  // Until a filter text is applied and the view has stood its trial.
  void Settle() {
    EXPECT_TRUE(m_host.RunUntil([this] { return !Child().ShownPane()->FilterProgress(); }));
    m_host.TickTimers();
    m_host.RunPosted();
  }
  CTraceChildFrame& Child(std::size_t place = 0) {
    return dynamic_cast<CTraceChildFrame&>(*Frame().Children()[place]);
  }
  CTraceView& List(std::size_t place = 0) { return *Child(place).ListView(); }
  void Filter(const std::string& text) {
    FilterLine& line = Child().Filter().Line();
    line.Edit(text);
    ASSERT_TRUE(line.Apply()) << line.Message();
    Settle();
  }
  void Focus(int row) {
    List().List().SetItemState(-1, 0, kRowFocused | kRowSelected);
    List().List().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }
  std::string Focused() {
    const TraceEvent_i* const trace = Child().ShownPane()->CurrentEvent();
    return trace ? trace->GetText() : "none";
  }
  // "Sev 44, Trace 576".
  std::string Columns(std::size_t place = 0) {
    std::string all;
    for (const ViewColumn& column : List(place).Columns().State())
      if (column.shown)
        all += (all.empty() ? "" : ", ") + column.header + " " + std::to_string(column.widthPx);
    return all;
  }
  std::string InForce(std::size_t place = 0) {
    const TracePane& pane = *Child(place).ShownPane();
    return pane.m_filter.where ? pane.m_filter.where->Text() : "";
  }
  StoredView Stored() {
    std::string why;
    return ReadStoredView(m_path, &why).value_or(StoredView{.source = "none, " + why});
  }
  std::string Notice() {
    m_host.RunPosted();
    return Face().m_panes[kPaneMessage];
  }

  std::string m_path;
};
