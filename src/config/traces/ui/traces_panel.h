// The list of traces and its buttons on a page.
//
// Object names: "traces", the buttons' ids.
//
// Owner    The page's window owns it; it borrows the list's rules and detaches itself at its end.
// Threads  Interface thread.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "config/traces/traces_list.h"

class QPushButton;
class QtReportList;

class TracesPanel final : public QWidget, public TracesControls {
 public:
  static constexpr unsigned kOff = 0x3101, kSupport = 0x3102, kDeveloper = 0x3103, kMax = 0x3104,
                            kCustom = 0x3105;
  using Forward = std::function<void(const std::function<void()>&)>;

  // `label` stands above the list; its access key leads to the list. `forward` makes the call of a
  // button.
  TracesPanel(CTracesList& traces, const QString& label, Forward forward, QWidget* parent);
  ~TracesPanel() override;

  ReportList& List() override;
  void EnableButtons(bool on) override;
  // The size that the list opens with, in characters and rows; it can become smaller.
  void SetWantedSize(int chars, int rows);

 private:
  void AddButton(unsigned id, const char* text, const std::function<void()>& press);
  void LayOut(QWidget* text);

  CTracesList& m_traces;
  const Forward m_forward;
  QtReportList* m_list;
  std::vector<QPushButton*> m_buttons;
};
