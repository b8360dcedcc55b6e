// The window of the trace properties dialog.
//
// Every control's object name is its id in decimal.
#pragma once

#include <utility>
#include <vector>

#include "docview/ui/qt_dialog_face.h"
#include "listview/details/trace_detail_dialog.h"

class QComboBox;
class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

class TraceDetailFace final : public QtDialogFace {
 public:
  TraceDetailFace(CTraceDetailDialog& dialog, QWidget* parent);
  ~TraceDetailFace() override;

  void UpdateData() override;

 protected:
  // Enter, Ctrl+G and the context menu on the stack lead to the source of the shown function.
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  bool GotoSource();
  void OfferSource(const QPoint& at);
  QGroupBox* MakeGroup(const char* name);
  void AddField(QGridLayout& grid, int row, const CTraceDetailDialog::Field& field);
  QLineEdit* MakeValue(const CTraceDetailDialog::Field& field);
  void ShowAccount();
  void AddStack(QGridLayout& grid);
  QPlainTextEdit* MakeText();
  QHBoxLayout* MakeButtons();
  void ShowTrace();
  void ShowText();
  void ShowStack();
  static void Widen(QLineEdit& value, int mostChars);
  void SizeByContent();

  CTraceDetailDialog& m_dialog;
  std::vector<std::pair<const CTraceDetailDialog::Field*, QLineEdit*>> m_values;
  QGridLayout* m_process = nullptr;  // of "Process Info"
  int m_accountRow = 0;              // in it; 0: not made yet
  QComboBox* m_stack = nullptr;
  QPlainTextEdit* m_text = nullptr;
  QPushButton *m_back = nullptr, *m_next = nullptr;
  bool m_sized = false;  // by the first shown trace
};
