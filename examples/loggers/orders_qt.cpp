#include <QtCore/QLoggingCategory>
#include <quor/qt.hpp>
#include <quor/quor.hpp>

QUOR_APPLICATION("orders");
Q_LOGGING_CATEGORY(db, "orders.db")

int main() {
  quor::InstallQtMessageHandler();
  qCInfo(db) << "connected to db.example.com in" << 12 << "ms";
  qCWarning(db, "query %d took %.1f s", 7, 2.5);
  qCDebug(db, "for developers: off until it is switched on");
  qCCritical(db, "query %d failed", 8);
}
