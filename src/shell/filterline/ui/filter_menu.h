// The button at the end of the line of filter text: recent texts, saved filters, saving and
// deleting.
//
// Shape    The menu is filled when it opens, because other windows and programs change the lists.
// Owner    Borrows the line until Detach.
// Threads  Interface thread.
#pragma once

#include <QMenu>
#include <QPushButton>

#include "shell/filterline/filter_line.h"

class FilterMenu : public QPushButton {
 public:
  FilterMenu(FilterLine& line, QWidget* parent);
  void Detach() { m_line = nullptr; }

 private:
  void Fill();
  void FillRecent();
  void FillSaved();
  void AddSource();
  void AddOpenAsTree();
  void OpenAsTree();
  void Apply(const std::string& text);
  void SaveAs();

  FilterLine* m_line;
  QMenu* m_menu;
};
