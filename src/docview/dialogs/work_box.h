// The box of long work: shows what is being done and how far it is, and has a Cancel button. The
// work continues in pieces of a few milliseconds on a timer of the box.
//
// Threads  Interface thread.
#pragma once

#include "docview/dialogs/dialog.h"
#include "docview/dialogs/long_work.h"

class CWorkBox : public CDialog {
 public:
  // The box ends with OK when the work is done. Borrows words and work.
  CWorkBox(Host& host, const LongWorkTexts& texts, LongWork& work);
  ~CWorkBox() override;

  const char* Title() const { return m_texts.title; }
  const char* Message() const { return m_texts.message; }
  const char* HelpTopic() const override { return m_texts.helpTopic; }
  std::optional<int> Progress() const { return m_work.Progress(); }

  void OnInitDialog() override;
  void OnOK() override {}  // only the work ends it that way

 private:
  void OnTick();
  void StopTimer();

  const LongWorkTexts& m_texts;
  LongWork& m_work;
  TimerId m_timer = 0;
};
