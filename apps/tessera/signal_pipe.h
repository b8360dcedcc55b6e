// Turns SIGTERM, SIGINT, SIGHUP (when the terminal closes) and the end of the session into events
// of the interface thread.
//
// Owner    One object in the program, on the interface thread.
// Errors   Without a pipe the signals keep their default effect. The end of the session is then
//          handled only by the window system, which closes the windows like a user.
#pragma once

#include <QObject>
#include <functional>

class SignalPipe : public QObject {
 public:
  explicit SignalPipe(std::function<void()> asked);
  ~SignalPipe() override;
  bool Asked() const { return m_asked; }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void OnReadable();
  std::function<void()> m_notify;
  int m_readEnd = -1;
  bool m_asked = false;
};
