// The built-in help: the pages of this program, by topic.
//
// Owner    Deletes itself when it is closed.
// Threads  Interface thread.
#pragma once

#include <QMainWindow>
#include <QTextBrowser>
#include <functional>

class HelpSearch;

class HelpWindow : public QMainWindow {
 public:
  explicit HelpWindow(QWidget* parent);

  // Shows the page of a topic; the contents for an empty or unknown one.
  void ShowTopic(const QString& topic);
  // The page that is shown.
  QString Topic() const;
  // All topics, in alphabetical order.
  static QStringList Topics();

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void MakeBar();
  void AddKey(const QKeySequence& key, const std::function<void()>& run);
  QTextBrowser* m_pages;
  HelpSearch* m_search;
};
