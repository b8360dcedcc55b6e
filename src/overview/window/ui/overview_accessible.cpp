#include "overview/window/ui/overview_accessible.h"

#include <QAccessibleWidget>

#include "overview/window/ui/overview_widget.h"

namespace {

class OverviewAccessible final : public QAccessibleWidget {
 public:
  explicit OverviewAccessible(OverviewWidget& widget)
      : QAccessibleWidget(&widget, QAccessible::Chart), m_widget(widget) {}
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Description ? m_widget.Description()
                                            : QAccessibleWidget::text(kind);
  }

 private:
  OverviewWidget& m_widget;
};

QAccessibleInterface* Describe(const QString&, QObject* object) {
  auto* widget = dynamic_cast<OverviewWidget*>(object);
  return widget ? new OverviewAccessible(*widget) : nullptr;
}

}  // namespace

void DescribeOverviews() {
  QAccessible::installFactory(Describe);  // ignores a factory that it has
}
