// Parts of dialog windows: buttons, boxes and labels, with uniform names.
//
// A control's object name is its id in decimal. Its accessible name is its text.
//
// Owner    The parent owns what is made.
// Threads  Interface thread.
#pragma once

#include <QDialogButtonBox>
#include <QString>

#include "docview/commands/command_ids.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QWidget;
class QtDialogFace;

constexpr unsigned kHelpButton = ID_HELP;

// "1079".
QString IdName(unsigned id);
// Gives the window this title as it is: Qt takes "[*]" in one for a mark of its own.
void SetPlainTitle(QWidget& window, QString title);
// A text for screen readers: without access key marks, the colon at its end and the arrows.
QString AccessibleName(QString text);
// Gives a control its two names.
void NameControl(QWidget& control, unsigned id, const QString& spoken);

// The access key presses the control at once (prompt_button.h).
QPushButton* MakeButton(unsigned id, const QString& text, QWidget* parent);
QCheckBox* MakeCheckBox(unsigned id, const QString& text, QWidget* parent);
// Shows the text as it is: no markup.
QLabel* MakePlainLabel(const QString& text, QWidget* parent);

// A named button at the place of its role.
QPushButton* AddButton(QDialogButtonBox& box, unsigned id, const QString& text,
                       QDialogButtonBox::ButtonRole role);

struct DialogButtons {
  QDialogButtonBox* box;
  QPushButton* ok;
};
// OK, which is the default button, Cancel and, with `withHelp`, Help, connected to the dialog.
DialogButtons MakeDialogButtons(QtDialogFace& dialog, bool withHelp);
