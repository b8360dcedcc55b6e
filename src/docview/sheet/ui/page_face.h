// The window of a CPropertyPage: base of all page faces.
//
// A face copies the page's members into widgets and calls the page's operations for what the user
// does. Every control's object name is its id in decimal.
//
// Owner    The sheet's window owns it; it borrows the page.
// Threads  Interface thread.
#pragma once

#include <QWidget>
#include <functional>
#include <map>
#include <typeindex>

#include "docview/sheet/property_page.h"

class QtPageFace : public QWidget, public PropertyPageFace {
 public:
  explicit QtPageFace(QWidget* parent);
  void SetFocus(unsigned control) override;
  // The first control that takes the focus; null when there is none.
  QWidget* FirstControl() const;
  // The texts that belong to no control.
  QString Words() const;

 protected:
  // Calls the page, then closes the window if that ended the sheet.
  void Forward(const std::function<void()>& call);
};

// Which face each page of a sheet has.
class PageFaces {
 public:
  // `Face` is made with (Page&, QWidget* parent).
  template <class Page, class Face>
  PageFaces& Add() {
    m_makers[typeid(Page)] = [](CPropertyPage& page, QWidget* parent) -> QtPageFace* {
      return new Face(static_cast<Page&>(page), parent);
    };
    return *this;
  }
  // REQUIRES: the page's class was added.
  QtPageFace* Make(CPropertyPage& page, QWidget* parent) const;

 private:
  using Maker = std::function<QtPageFace*(CPropertyPage&, QWidget*)>;
  std::map<std::type_index, Maker> m_makers;
};
