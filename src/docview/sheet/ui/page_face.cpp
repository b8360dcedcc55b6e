#include "docview/sheet/ui/page_face.h"

#include <QAccessibleWidget>
#include <QLabel>

#include "docview/ui/dialog_parts.h"
#include "docview/ui/qt_dialog_face.h"

namespace {

// A group with a name, which screen readers tell when the focus enters it.
class PageAccessible final : public QAccessibleWidget {
 public:
  explicit PageAccessible(QtPageFace& page)
      : QAccessibleWidget(&page, QAccessible::Grouping), m_page(page) {}
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Description ? m_page.Words() : QAccessibleWidget::text(kind);
  }

 private:
  const QtPageFace& m_page;
};

QAccessibleInterface* DescribePage(const QString&, QObject* object) {
  auto* const page = dynamic_cast<QtPageFace*>(object);
  return page ? new PageAccessible(*page) : nullptr;
}

}  // namespace

QtPageFace::QtPageFace(QWidget* parent) : QWidget(parent) {
  QAccessible::installFactory(DescribePage);  // ignores a factory that it has
}

void QtPageFace::SetFocus(unsigned control) {
  if (auto* const widget = findChild<QWidget*>(IdName(control))) widget->setFocus();
}

QWidget* QtPageFace::FirstControl() const {
  for (QWidget* each = nextInFocusChain(); each != this; each = each->nextInFocusChain()) {
    if (!isAncestorOf(each) || each->isHidden() || !each->isEnabledTo(this)) continue;
    if (each->focusPolicy() & Qt::TabFocus) return each;
  }
  return nullptr;
}

QString QtPageFace::Words() const {
  QStringList words;
  for (const QLabel* const label : findChildren<QLabel*>())
    if (!label->buddy()) words << label->text();
  return words.join(QLatin1Char(' '));
}

void QtPageFace::Forward(const std::function<void()>& call) {
  call();
  if (auto* const sheet = dynamic_cast<QtDialogFace*>(window())) sheet->CloseIfEnded();
}

QtPageFace* PageFaces::Make(CPropertyPage& page, QWidget* parent) const {
  return m_makers.at(typeid(page))(page, parent);
}
