// What the windows of dialogs are put together from, so that their controls are named alike.
//
// Every control's object name is its id in decimal. Its accessible name is what its text says.
//
// Owner    The parent owns what is made.
// Threads  Interface thread.
#pragma once

#include <QDialogButtonBox>
#include <QString>

class QCheckBox;
class QLabel;
class QPushButton;
class QWidget;
class QtDialogFace;

constexpr unsigned kHelpButton = 57670;

// "1079".
QString IdName(unsigned id);
// What a text says aloud: without the marks of access keys, a caption's colon and a button's arrow.
QString SpokenName(QString text);
// Gives a control its two names.
void NameControl(QWidget& control, unsigned id, const QString& spoken);

// Their access keys press them at once.
QPushButton* MakeButton(unsigned id, const QString& text, QWidget* parent);
QCheckBox* MakeCheckBox(unsigned id, const QString& text, QWidget* parent);
// Shows the text as it is: no markup.
QLabel* MakePlainLabel(const QString& text, QWidget* parent);

// A named button at the place that its role has.
QPushButton* AddButton(QDialogButtonBox& box, unsigned id, const QString& text,
                       QDialogButtonBox::ButtonRole role);

struct DialogButtons {
  QDialogButtonBox* box;
  QPushButton* ok;
};
// OK, which is the default button, Cancel, and Help unless `withHelp` is false. They do what these
// words say to the dialog.
DialogButtons MakeDialogButtons(QtDialogFace& dialog, bool withHelp);
