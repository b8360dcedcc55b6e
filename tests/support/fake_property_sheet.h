// The window of a property sheet without a screen: pages with text fields, one focus, one size.
//
// Each field is bound to a member of its page; that of a check box or of radio buttons has a number
// as its text. A field of a number refuses any other text, and takes the focus then. The user types
// into the page in front only, and presses only what can be pressed.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "docview/sheet/property_sheet.h"
#include "support/sheet_button.h"

class FakePropertyPage final : public PropertyPageFace {
 public:
  explicit FakePropertyPage(unsigned& focus) : m_focus(focus) {}
  void Bind(unsigned control, std::string& member) {
    m_fields.push_back({control, "", [&member] { return member; },
                        [&member](const std::string& text) {
                          member = text;
                          return true;
                        }});
  }
  void Bind(unsigned control, int& member) {
    m_fields.push_back({control, "", [&member] { return std::to_string(member); },
                        [&member](const std::string& text) { return TakeNumber(text, member); }});
  }

  void ShowData() override {
    for (Field& field : m_fields) field.text = field.show();
  }
  bool TakeData() override {
    const auto refuses = [](const Field& field) { return !field.take(field.text); };
    const auto bad = std::find_if(m_fields.begin(), m_fields.end(), refuses);
    if (bad == m_fields.end()) return true;
    m_focus = bad->control;
    return false;
  }
  void SetFocus(unsigned control) override {
    if (Find(control)) m_focus = control;
  }
  unsigned FirstControl() const { return m_fields.empty() ? 0 : m_fields.front().control; }
  std::string* Find(unsigned control) {
    for (Field& field : m_fields)
      if (field.control == control) return &field.text;
    return nullptr;
  }

 private:
  struct Field {
    unsigned control;
    std::string text;
    std::function<std::string()> show;
    std::function<bool(const std::string&)> take;  // false: it refuses
  };
  static bool TakeNumber(const std::string& text, int& member) {
    const char* const end = text.data() + text.size();
    int number = 0;
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) return false;
    member = number;
    return true;
  }
  std::vector<Field> m_fields;
  unsigned& m_focus;
};

class FakePropertySheet : public PropertySheetFace {
 public:
  explicit FakePropertySheet(CPropertySheet& sheet) : m_sheet(sheet) {}
  ~FakePropertySheet() override { m_sheet.Close(); }
  FakePropertySheet(const FakePropertySheet&) = delete;
  FakePropertySheet& operator=(const FakePropertySheet&) = delete;
  // One for each of the sheet's pages, in their order, before Open.
  FakePropertyPage& AddPage(int widthPx) {
    m_widthPx = std::max(m_widthPx, widthPx);
    return m_pages.emplace_back(m_focus);
  }
  void Open() { m_sheet.Open(*this); }

  FakePropertyPage& Page(std::size_t place) override { return m_pages.at(place); }
  void ShowPage(std::size_t place) override {
    if (m_sheet.IsWizard() || !m_shown) m_focus = m_pages.at(place).FirstControl();
    m_front = place;
    m_shown = true;
  }
  void UpdateData() override {
    m_title = m_sheet.Title();
    m_apply = m_sheet.CanApply();
    m_buttons = m_sheet.WizardButtons();
  }

  // What the user sees.
  const std::string& Title() const { return m_title; }
  std::size_t Front() const { return m_front; }
  unsigned Focus() const { return m_focus; }  // 0: not in a field
  int WidthPx() const { return m_widthPx; }
  bool CanPress(SheetButton button) const {
    const bool finish = m_buttons & PSWIZB_FINISH;
    switch (button) {
      case SheetButton::Cancel:
        return true;
      case SheetButton::Ok:
        return !m_sheet.IsWizard();
      case SheetButton::Apply:
        return !m_sheet.IsWizard() && m_apply;
      case SheetButton::Back:
        return m_sheet.IsWizard() && (m_buttons & PSWIZB_BACK);
      case SheetButton::Next:
        return m_sheet.IsWizard() && !finish && (m_buttons & PSWIZB_NEXT);
      default:
        return m_sheet.IsWizard() && finish;
    }
  }
  std::string Text(unsigned control) { return Field(control); }
  // What the user does.
  void Type(unsigned control, const std::string& text) {
    m_focus = control;
    Field(control) = text;
  }
  void ChooseTab(std::size_t place) { m_sheet.SetActivePage(place); }
  void PressEnter() {
    if (m_sheet.IsWizard())
      Press(m_buttons & PSWIZB_FINISH ? SheetButton::Finish : SheetButton::Next);
    else
      Press(SheetButton::Ok);
  }
  void Press(SheetButton button) {
    if (!CanPress(button)) return;
    switch (button) {
      case SheetButton::Cancel:
        return m_sheet.OnCancel();
      case SheetButton::Ok:
        return m_sheet.OnOK();
      case SheetButton::Apply:
        return m_sheet.OnApply();
      case SheetButton::Back:
        return m_sheet.OnBack();
      case SheetButton::Next:
        return m_sheet.OnNext();
      case SheetButton::Finish:
        return m_sheet.OnFinish();
    }
  }

 private:
  std::string& Field(unsigned control) {
    std::string* const field = m_pages.at(m_front).Find(control);
    if (field) return *field;
    ADD_FAILURE() << "the page " << m_title << " has no control " << control;
    return m_none;
  }

  CPropertySheet& m_sheet;
  std::string m_none;
  std::deque<FakePropertyPage> m_pages;
  std::string m_title;
  std::size_t m_front = 0;
  unsigned m_focus = 0, m_buttons = 0;
  int m_widthPx = 0;
  bool m_apply = false, m_shown = false;
};
