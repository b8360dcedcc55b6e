// Traces what qDebug(), qCInfo(category) and the like log: call quor::InstallQtMessageHandler()
// once.
//
// Shape    The category gives component and category (logger.h); "default" is Log/Qt. debug: Info,
//          Developer. info, warning: Info, Warn. critical, fatal: Error. Qt gives file and line in
//          debug builds, and where QT_MESSAGELOGCONTEXT is defined. The handler that was installed
//          before is called too, after the trace, so messages go where they went.
// Errors   It never throws. A handler that calls the one before it may be installed later on.
// Threads  Any. A message that is logged inside the handler is not traced.
#ifndef QUOR_QT_HPP
#define QUOR_QT_HPP

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QtGlobal>
#include <atomic>
#include <cstring>

#include "logger.h"

namespace quor {
namespace detail {

inline std::atomic<QtMessageHandler> g_qtHandlerBefore{nullptr};

inline unsigned QtAttributesOf(QtMsgType type) noexcept {
  switch (type) {
    case QtDebugMsg:
      return QUOR_INFO | QUOR_DEVELOPER;
    case QtInfoMsg:
      return QUOR_INFO;
    case QtWarningMsg:
      return QUOR_WARN;
    default:
      return QUOR_ERROR;
  }
}

inline void TraceQtMessage(QtMsgType type, const QMessageLogContext& context,
                           const QString& message) {
  const char* const category = context.category ? context.category : "";
  const bool named = std::strcmp(category, "default") != 0;
  quor_point* const point = quor_logger_point(category, named ? std::strlen(category) : 0, "Qt");
  const unsigned attributes = QtAttributesOf(type);
  if (!quor_on(point, attributes)) return;
  QT_TRY {
    const QByteArray text = message.toUtf8();
    quor_trace(point, attributes, context.file, static_cast<unsigned>(context.line),
               text.constData(), static_cast<std::size_t>(text.size()));
  }
  QT_CATCH(...) {
    quor_trace(point, attributes, context.file, static_cast<unsigned>(context.line),
               "(no memory for the text)", 24);
  }
}

// Handlers may call each other in a circle when they are installed more than once.
inline void HandleQtMessage(QtMsgType type, const QMessageLogContext& context,
                            const QString& message) {
  thread_local bool inside = false;
  if (inside) return;
  struct Inside {
    Inside() noexcept { inside = true; }
    ~Inside() { inside = false; }
  } const mark;
  TraceQtMessage(type, context, message);
  const QtMessageHandler before = g_qtHandlerBefore.load(std::memory_order_acquire);
  if (before) before(type, context, message);
}

}  // namespace detail

inline void InstallQtMessageHandler() {
  const QtMessageHandler before = qInstallMessageHandler(detail::HandleQtMessage);
  if (before != detail::HandleQtMessage)
    detail::g_qtHandlerBefore.store(before, std::memory_order_release);
}

}  // namespace quor

#endif
