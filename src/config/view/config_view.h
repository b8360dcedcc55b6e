// The view of a configuration: a list of its applications, from which the user adds, deletes and
// opens them.
//
// Shape    The data of an item are the document's handle of that application. A list without
//          applications has one item instead, a placeholder without data.
// Wait     Each request to the machine blocks for at most 5 seconds, under a wait cursor. A line
//          below the list tells while the connection is broken.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "config/document/config_doc.h"
#include "config/view/config_pane.h"
#include "docview/view.h"

class CConfigView : public CView, public ListBoxOwner {
 public:
  static constexpr char kPlaceholder[] = "<add applications to trace>";

  CConfigView(CConfigDoc& document, const ConfigPaneMaker& makePane);
  ~CConfigView() override;

  void OnInitialUpdate() override;
  void OnUpdate(CView* sender, unsigned hint, CObject* object) override;
  // Clears both panes of the main window: applications are neither rows nor filtered.
  void OnActivateView(bool activate, CView* activated, CView* deactivated) override;
  ViewControl* Control() override { return m_pane.get(); }

  void OnListBoxSelection() override {}
  void OnListBoxDoubleClick() override;
  bool OnListBoxKey(ListBoxKey key) override;
  void OnListBoxContextMenu(int screenXPx, int screenYPx) override;

 private:
  void OnAddApplication();
  void OnDeleteApplication();
  void OnProperties();
  bool HasCurrent() const;
  trace_App_i* Current() const;  // null for none and for the placeholder
  std::set<std::string> NamesToAdd() const;
  std::string WhyNoNames() const;
  bool Add(const std::string& name);  // false: the machine cannot be reached
  void AddPlaceholder();
  void SelectItem(const trace_App_i& app);
  void ShowConnection();

  CConfigDoc& m_document;
  const std::unique_ptr<ConfigPane> m_pane;
  ListBox& m_listBox;
  bool m_bEmpty = true;  // the list shows the placeholder
  TimerId m_timer = 0;   // looks at the connection
};
