#include "docview/ui/choice_menu.h"

#include <QMenu>
#include <utility>

void OpenChoiceMenu(QWidget* parent, const std::vector<MenuChoice>& choices, const QPoint& screen,
                    std::function<void(std::size_t)> chosen) {
  auto* const menu = new QMenu(parent);
  menu->setObjectName(QStringLiteral("choices"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (std::size_t place = 0; place < choices.size(); ++place) {
    const MenuChoice& choice = choices[place];
    if (choice.text.empty()) {
      menu->addSeparator();
      continue;
    }
    QAction* const action = menu->addAction(QString::fromStdString(choice.text));
    action->setEnabled(choice.enabled);
    action->setCheckable(choice.ticked.has_value());
    action->setChecked(choice.ticked.value_or(false));
    QObject::connect(action, &QAction::triggered, menu, [chosen, place] { chosen(place); });
  }
  menu->popup(screen);
}
