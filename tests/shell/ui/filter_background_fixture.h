// A window with millions of traces and the line of filter text, and what its event loop does while
// a text is applied.
#pragma once

#include <QElapsedTimer>
#include <algorithm>
#include <fstream>

#include "shell/child_frame.h"
#include "shell/filterline/ui/filter_line_widget.h"
#include "shell_fixture.h"

class FilterBackgroundTest : public ShellTest {
 protected:
  CTraceChildFrame& Child() { return dynamic_cast<CTraceChildFrame&>(*Frame().MDIGetActive()); }
  FilterLineWidget& Line() {
    return *static_cast<FilterLineWidget*>(
        Front()->findChildren<QWidget*>(QStringLiteral("filter line")).front());
  }
  void Type(const char* text) {
    Line().Edit().setText({});
    QTest::keyClicks(&Line().Edit(), QString::fromLatin1(text));
  }
  void OpenWithLine(const std::string& path) {
    Start();
    Open(path);
    Frame().OnCommand(ID_VIEW_FILTERTEXT);
    Settle();
  }
};

// The turns of the loop: the longest time between two of them, and how many there are while a text
// is applied.
class LoopWatch {
 public:
  // `look` is called in each of the latter.
  LoopWatch(const TracePane& pane, std::function<void()> look) {
    m_clock.start();
    m_timer.callOnTimeout([this, &pane, look = std::move(look)] {
      const qint64 now = m_clock.nsecsElapsed();
      m_longest = std::max(m_longest, now - std::exchange(m_last, now));
      if (!pane.FilterProgress()) return;
      ++m_turns;
      look();
    });
    m_timer.start(0);
  }
  qint64 Now() const { return m_clock.nsecsElapsed(); }
  qint64 Longest() const { return m_longest; }
  int Turns() const { return m_turns; }

 private:
  QElapsedTimer m_clock;
  QTimer m_timer;
  qint64 m_last = 0, m_longest = 0;
  int m_turns = 0;
};
