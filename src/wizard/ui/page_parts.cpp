#include "wizard/ui/page_parts.h"

#include <QButtonGroup>
#include <QRadioButton>
#include <algorithm>

#include "controls/listbox/ui/list_box_widget.h"
#include "docview/ui/dialog_parts.h"
#include "docview/ui/prompt_button.h"
#include "docview/ui/wrapped_label.h"

namespace {

constexpr int kParagraphGapPx = 10, kChoicesIndentPx = 16, kLeastRows = 5, kLeastChars = 30;

}  // namespace

void AddParagraphs(QWidget& page, QVBoxLayout& layout, std::span<const char* const> texts) {
  for (const char* const text : texts) {
    layout.addWidget(new WrappedLabel(text, &page));
    layout.addSpacing(kParagraphGapPx);
  }
}

std::vector<QRadioButton*> AddChoices(QWidget& page, QVBoxLayout& layout, unsigned firstId,
                                      std::span<const char* const> texts) {
  auto* const group = new QButtonGroup(&page);
  auto* const column = new QVBoxLayout;
  column->setContentsMargins(kChoicesIndentPx, 0, 0, 0);
  std::vector<QRadioButton*> choices;
  for (const char* const text : texts) {
    auto* const radio = new PromptButton<QRadioButton>(text, &page);
    NameControl(*radio, firstId++, text);
    group->addButton(radio);
    column->addWidget(radio);
    choices.push_back(radio);
  }
  layout.addLayout(column);
  return choices;
}

int ChosenOf(const std::vector<QRadioButton*>& choices) {
  const auto chosen = std::find_if(choices.begin(), choices.end(),
                                   [](const QRadioButton* each) { return each->isChecked(); });
  return static_cast<int>(chosen - choices.begin());
}

void AddList(QWidget& page, QVBoxLayout& layout, const char* label, QtListBox& list,
             std::span<QWidget* const> buttons) {
  auto* const text = new WrappedLabel(label, &page);
  text->setBuddy(&list);
  list.setMinimumWidth(list.fontMetrics().averageCharWidth() * kLeastChars);
  list.setMinimumHeight(list.RowHeight() * kLeastRows);
  auto* const column = new QVBoxLayout;
  for (QWidget* const button : buttons) column->addWidget(button);
  column->addStretch(1);
  auto* const row = new QHBoxLayout;
  row->addWidget(&list, 1);
  row->addLayout(column);
  layout.addWidget(text);
  layout.addLayout(row, 1);
}
