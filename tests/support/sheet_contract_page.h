// A page for the property sheet contract: two fields of text, one of a number, and a log of what it
// was asked.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "docview/sheet/property_sheet.h"

using SheetLog = std::vector<std::string>;

class ContractPage : public CPropertyPage {
 public:
  static constexpr unsigned kName = 1001, kNote = 1002, kNumber = 1003;  // the fields

  // `widthPx` is what its fields want at least.
  ContractPage(Host& host, unsigned id, std::string caption, SheetLog& log, int widthPx)
      : CPropertyPage(host, id, std::move(caption)), m_widthPx(widthPx), m_log(log) {}

  void OnInitDialog() override {
    Note("begins");
    m_note = "begun";
  }
  void OnSetActive() override {
    Note("active");
    if (onActive) onActive();
  }
  bool OnKillActive() override {
    Note("asked");
    if (!CPropertyPage::OnKillActive()) return false;
    if (m_name != "bad") return true;
    SetFocus(kNote);
    return false;
  }
  void OnOK() override {
    Note("ok " + m_name);
    m_note = "applied";
  }
  void OnCancel() override { Note("cancel"); }
  int OnWizardBack() override { return Answer("back"); }
  int OnWizardNext() override { return Answer("next"); }
  int OnWizardFinish() override { return Answer("finish"); }

  std::string m_name, m_note;
  int m_number = 0;
  const int m_widthPx;
  int answer = kWizardInOrder;     // to the wizard's buttons
  std::function<void()> onActive;  // what OnSetActive does
  std::function<void()> onAnswer;  // what the wizard's operations do

 private:
  int Answer(const char* button) {
    Note(button);
    if (onAnswer) onAnswer();
    return answer;
  }
  void Note(const std::string& what) { m_log.push_back(Caption() + " " + what); }
  SheetLog& m_log;
};
