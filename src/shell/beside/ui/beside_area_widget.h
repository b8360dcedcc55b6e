// The Qt window of the panes beside the rows.
//
// Threads  Interface thread.
#pragma once

#include <QTabWidget>
#include <vector>

#include "docview/ui/qt_control.h"
#include "shell/beside/beside_area.h"

class QtBesideArea final : public QTabWidget, public BesideArea, public QtControl {
 public:
  explicit QtBesideArea(BesideAreaOwner& owner);
  ~QtBesideArea() override;

  QWidget* Widget() override { return this; }
  void SetFocus() override;

  void InsertTab(std::size_t place, const std::string& title, ViewControl& control) override;
  void RemoveTab(std::size_t place) override;
  void SetTabTitle(std::size_t place, const std::string& title) override;
  void SetFront(std::size_t place) override;
  std::size_t Front() const override;
  bool HasFocus() const override;

 private:
  void NameButton(int place, const std::string& title);
  bool Has(std::size_t place) const { return place < static_cast<std::size_t>(count()); }

  BesideAreaOwner& m_owner;
  bool m_calling = false;  // a change by code is not reported
};
