#include "config/pages/ui/traces_page_face.h"

#include <QVBoxLayout>

#include "config/traces/ui/traces_panel.h"

TracesPageFace::TracesPageFace(CAppTraceCfgPropertyPage& page, QWidget* parent)
    : QtPageFace(parent) {
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(new TracesPanel(
      page.Traces(), CAppTraceCfgPropertyPage::kLabel,
      [this](const std::function<void()>& call) { Forward(call); }, this));
}
