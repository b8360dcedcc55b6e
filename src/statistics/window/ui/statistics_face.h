// The window of the statistics.
//
// Object names: the ids of the dialog in decimal; "statistics" is the window.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "statistics/window/statistics_dialog.h"

class QComboBox;
class QLabel;
class QPushButton;
class QtReportList;

class StatisticsFace final : public QtDialogFace, public StatisticsControls {
 public:
  StatisticsFace(CStatisticsDlg& dialog, QWidget* parent);
  ~StatisticsFace() override;

  ReportList& List() override;
  void ShowStatus(const std::string& text) override;
  void EnableOnlyThis(bool on) override;

 private:
  void MakeFields();
  void LayOut();

  CStatisticsDlg& m_statistics;
  QComboBox* m_field;
  QtReportList* m_list;
  QLabel* m_status;
  QPushButton* m_onlyThis;
  QPushButton *m_close, *m_help;
};
