// The answers of the simulated user, in order. An answer that was not used fails the test at its
// end, because the expectations in it were not checked. Threads: the interface thread.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "docview/dialogs/dialog.h"
#include "docview/host.h"

class UserScript {
 public:
  using DialogScript = std::function<void(CDialog&)>;

  void AnswerBox(BoxAnswer answer) { m_boxAnswers.push_back(answer); }
  void AnswerFileDialog(std::optional<FileDialogAnswer> answer) {
    m_fileAnswers.push_back(std::move(answer));
  }
  void AnswerFileDialog(const std::string& path) { AnswerFileDialog(FileDialogAnswer{path, {}}); }
  // The action in the next modal dialog; a dialog that is still open after it is cancelled.
  void AnswerDialog(DialogScript script) { m_dialogScripts.push_back(std::move(script)); }
  // The same for the next box of long work. Without a script the box is waited for, without a line
  // in the transcript, because on a slow machine it may open in any test.
  void AnswerWorkBox(DialogScript script) { m_workScripts.push_back(std::move(script)); }

 protected:
  ~UserScript() {
    EXPECT_EQ(m_boxAnswers.size(), 0U) << "answers to boxes that never came";
    EXPECT_EQ(m_fileAnswers.size(), 0U) << "answers to file dialogs that never came";
    EXPECT_EQ(m_dialogScripts.size(), 0U) << "scripts of dialogs that never came";
    EXPECT_EQ(m_workScripts.size(), 0U) << "scripts of boxes of long work that never came";
  }
  std::optional<BoxAnswer> NextBoxAnswer() { return Next(m_boxAnswers); }
  std::optional<FileDialogAnswer> NextFileAnswer() {
    return Next(m_fileAnswers).value_or(std::nullopt);
  }
  // Empty when the script has none.
  DialogScript NextDialogScript(bool work) {
    return Next(work ? m_workScripts : m_dialogScripts).value_or(DialogScript());
  }

 private:
  template <class Answer>
  static std::optional<Answer> Next(std::deque<Answer>& answers) {
    if (answers.empty()) return std::nullopt;
    std::optional<Answer> next = std::move(answers.front());
    answers.pop_front();
    return next;
  }
  std::deque<BoxAnswer> m_boxAnswers;
  std::deque<std::optional<FileDialogAnswer>> m_fileAnswers;
  std::deque<DialogScript> m_dialogScripts, m_workScripts;
};
