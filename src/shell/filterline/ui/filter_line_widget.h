// The Qt class of the line of filter text: the edit, below it how the text stands, and the list of
// completions.
//
// Shape    Qt's places are UTF-16, those of the line are bytes of UTF-8: converted here.
// Owner    Owned by its QtFilterLine; borrows the line until Detach.
// Threads  Interface thread.
#pragma once

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QToolButton>
#include <QWidget>

#include "docview/ui/qt_control.h"
#include "shell/filterline/filter_line.h"
#include "shell/filterline/ui/completion_list.h"
#include "shell/filterline/ui/filter_edit.h"
#include "shell/filterline/ui/filter_menu.h"

class FilterLineWidget : public QWidget {
 public:
  explicit FilterLineWidget(FilterLine& line);
  ~FilterLineWidget() override;
  // The line is about to go.
  void Detach();

  // Its caller deletes it later then.
  bool IsInKey() const { return m_inKey; }
  void Update();
  FilterEdit& Edit() const { return *m_edit; }
  FilterMenu& Filters() const { return *m_filters; }
  CompletionList* Completions() const { return m_list; }
  QString Message() const { return m_message->text(); }
  QProgressBar& Bar() const { return *m_bar; }
  QToolButton& StopButton() const { return *m_stop; }

 protected:
  void changeEvent(QEvent* event) override;

 private:
  bool OnKey(const QKeyEvent& key);
  bool OnListKey(const QKeyEvent& key);
  void OnTyped();
  void Offer();
  void TakeCompletion();
  void CloseList();
  bool IsListOpen() const { return m_list && m_list->isVisible(); }
  void ShowState();
  QLayout* MakeMessageRow();
  void ShowProgress();

  FilterLine* m_line;
  FilterEdit* m_edit;
  FilterMenu* m_filters;
  QLabel* m_message;
  QProgressBar* m_bar;  // while a text is being applied, as the button
  QToolButton* m_stop;
  QPointer<CompletionList> m_list;  // a child of the window; made when it is first needed
  bool m_updating = false;
  bool m_inKey = false;
};

class QtFilterLine : public FilterLineFace, public QtControl {
 public:
  explicit QtFilterLine(FilterLine& line) : m_widget(new FilterLineWidget(line)) {}
  ~QtFilterLine() override;

  QWidget* Widget() override { return m_widget; }
  void SetFocus() override;
  bool HasFocus() const override { return m_widget && m_widget->Edit().hasFocus(); }
  void Update() override {
    if (m_widget) m_widget->Update();
  }

 private:
  QPointer<FilterLineWidget> m_widget;
};
