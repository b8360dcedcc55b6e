// The search of the help: a field, and where the hit that is shown stands among all.
//
// Shape    Hits are counted over all pages, from the page that shows on. Capitals and small letters
//          are the same. When another page comes up by other means, no hit is shown until the next
//          step, which goes on from there.
// Owner    Borrows the browser, which `show` shows a page in.
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
  // The keyboard goes to the field.
  void Begin();
  // From one hit to the next, round and round.
  void Step(int by);

  QString Said() const { return m_said->text(); }  // "2 of 17", "17 found", "not found", or nothing

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
  void Say();
  void ShowHit();
  void MarkHits(const QString& topic);

  QTextBrowser& m_pages;
  const QStringList m_topics;
  const std::function<void(const QString&)> m_show;
  QLineEdit* m_field;
  QLabel* m_said;
  std::vector<Hit> m_hits;
  std::optional<std::size_t> m_current;  // nothing while no hit is shown
  bool m_showing = false;                // a hit's page
};
