// The window of the Sink page.
//
// Object names: the controls' ids.
//
// Threads  Interface thread.
#pragma once

#include <functional>

#include "config/pages/sink_page.h"
#include "docview/sheet/ui/page_face.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLineEdit;
class QRadioButton;
class QToolButton;

class SinkPageFace final : public QtPageFace {
 public:
  SinkPageFace(CAppSinkCfgPropertyPage& page, QWidget* parent);
  void ShowData() override;
  bool TakeData() override;

 private:
  void MakeServer(QGridLayout& grid);
  void MakeFile(QGridLayout& grid);
  QRadioButton* MakeRadio(unsigned id, const char* text, std::function<void()> press);
  QLineEdit* MakeField(unsigned id, const char* label, QGridLayout& grid);
  QComboBox* MakeCombo(unsigned id, const char* label, const std::vector<std::string>& choices,
                       QGridLayout& grid);
  void AddLabel(const char* text, QWidget* buddy, QGridLayout& grid);
  void OnEdit();

  CAppSinkCfgPropertyPage& m_page;
  QRadioButton *m_server, *m_file;
  QLineEdit *m_machine, *m_fileName;
  QToolButton* m_browse;
  QCheckBox* m_flush;
  QComboBox *m_historicFiles, *m_maxSize;
  bool m_showing = false;  // the controls change by ShowData
};
