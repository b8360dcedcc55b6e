// The search of the help: a field, and the number of the shown hit.
//
// Shape    Hits are counted over all pages, beginning with the shown page. The case of letters is
//          ignored. When another page is shown by other means, no hit is shown until the next step,
//          which continues from there.
// Owner    Borrows the browser, in which `show` shows a page.
// Threads  Interface thread.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QTextBrowser>
#include <functional>
#include <optional>
#include <vector>

class HelpSearch : public QWidget {
 public:
  // `show` shows the page of a topic; `topics` are in reading order.
  HelpSearch(QTextBrowser& pages, const QStringList& topics,
             std::function<void(const QString& topic)> show, QWidget* parent);
  // Moves the keyboard focus to the field.
  void Begin();
  // From one hit to the next, in a circle.
  void Step(int by);

  // "2 of 17", "17 found", "not found", or empty
  QString StatusText() const { return m_said->text(); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  struct Hit {
    QString topic;
    int position;
  };
  void Search();
  void Collect();
  void OnOtherPage();
  void ShowStatus();
  void ShowHit();
  void MarkHits(const QString& topic);

  QTextBrowser& m_pages;
  const QStringList m_topics;
  const std::function<void(const QString&)> m_show;
  QLineEdit* m_field;
  QLabel* m_said;
  std::vector<Hit> m_hits;
  std::optional<std::size_t> m_current;  // none while no hit is shown
  bool m_showing = false;                // the page of a hit
};
