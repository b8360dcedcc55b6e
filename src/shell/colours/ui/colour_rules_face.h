// The window of "Colour Rules".
//
// Every control's object name is its id in decimal.
//
// Threads  Interface thread.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "shell/colours/colour_rules_dialog.h"

class FilterEdit;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLayout;
class QLineEdit;
class QListWidget;
class QPushButton;

class ColourRulesFace final : public QtDialogFace {
 public:
  ColourRulesFace(CColourRulesDialog& dialog, QWidget* parent);

  void UpdateData() override;

 protected:
  void OnAccept() override;

 private:
  QLayout* MakeList();
  QLayout* MakeListButtons();
  QGridLayout* MakeEdits();
  QLayout* MakeSets();
  QPushButton* MakePress(unsigned id, const char* text, std::function<void()> press);
  // The edit of a colour, with a button that opens the dialog of colours.
  QLayout* MakeColour(unsigned edit, unsigned pick, const char* text, QLineEdit*& made);
  void Pick(QLineEdit& edit);
  // After an operation of the dialog that changes the rules or which of them is edited.
  void Act(const std::function<void()>& operation);
  void Edit(const std::function<void()>& change);
  void ShowRules();
  void ShowRows();
  void ShowRow(int row);
  void ShowCurrent();
  void ShowNotice();
  void ShowSample();
  void ShowSets();

  CColourRulesDialog& m_dialog;
  bool m_showing = false;  // the controls change, not the user
  QCheckBox* m_shown;
  QListWidget* m_rules;
  QLineEdit* m_name;
  FilterEdit* m_text;
  QLineEdit *m_ink = nullptr, *m_ground = nullptr;
  QLabel *m_sample, *m_notice;
  QComboBox* m_set;
  QPushButton *m_remove = nullptr, *m_up = nullptr, *m_down = nullptr;
};
