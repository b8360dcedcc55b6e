// Parts that several pages of the wizard have.
//
// Owner    The page owns what is made.
// Threads  Interface thread.
#pragma once

#include <QVBoxLayout>
#include <span>
#include <vector>

class QRadioButton;
class QtListBox;
class QWidget;

// A paragraph for each text.
void AddParagraphs(QWidget& page, QVBoxLayout& layout, std::span<const char* const> texts);
// Radio buttons that exclude each other, with the ids from `firstId` on.
std::vector<QRadioButton*> AddChoices(QWidget& page, QVBoxLayout& layout, unsigned firstId,
                                      std::span<const char* const> texts);
int ChosenOf(const std::vector<QRadioButton*>& choices);
// The list below its label, with the buttons right of it.
void AddList(QWidget& page, QVBoxLayout& layout, const char* label, QtListBox& list,
             std::span<QWidget* const> buttons);
