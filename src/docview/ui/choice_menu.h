// A pop-up menu of choices. It closes itself, and belongs to its parent until then.
//
// Threads  Interface thread.
#pragma once

#include <QPoint>
#include <functional>
#include <vector>

#include "docview/menu_choice.h"

class QWidget;

// Returns at once. `chosen` gets the place of the choice; without one it is not called.
void OpenChoiceMenu(QWidget* parent, const std::vector<MenuChoice>& choices, const QPoint& screen,
                    std::function<void(std::size_t)> chosen);
