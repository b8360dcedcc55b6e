// SIGTERM, SIGINT and, when the terminal closes, SIGHUP as events of the interface thread.
//
// Owner    One object in the program, on the interface thread.
// Errors   Without a pipe the signals keep their default effect.
#pragma once

#include <QObject>
#include <functional>

class SignalPipe : public QObject {
 public:
  explicit SignalPipe(std::function<void()> asked);
  ~SignalPipe() override;
  bool Asked() const { return m_asked; }

 private:
  void OnReadable();
  std::function<void()> m_toldTo;
  int m_readEnd = -1;
  bool m_asked = false;
};
