// The Qt window of the details pane: the fields and the stack as rows, and the text beside or below
// them, whichever leaves both more room.
//
// Threads  Interface thread.
#pragma once

#include <QPlainTextEdit>
#include <QTreeWidget>
#include <QWidget>

#include "docview/ui/key_keeper.h"
#include "docview/ui/qt_control.h"
#include "shell/details/details_pane.h"

class QLabel;
class QLayout;
class QPushButton;
class QSplitter;

class DetailFields final : public QTreeWidget, public KeyKeeper {
 public:
  explicit DetailFields(DetailsPane& pane);

  void Update();

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void ShowRow(std::size_t row);
  std::vector<std::size_t> Chosen() const;
  std::size_t Current() const;
  void OpenMenu(std::size_t row, const QPoint& screen);
  void Copy(const std::vector<std::size_t>& rows) const;
  void CopyAll() const;

  DetailsPane& m_pane;
};

class DetailText final : public QPlainTextEdit, public KeyKeeper {
 public:
  explicit DetailText(DetailsPane& pane);

  void ShowText();

 protected:
  bool event(QEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  DetailsPane& m_pane;
};

class QtDetails final : public QWidget, public DetailsFace, public QtControl {
  Q_OBJECT

 public:
  explicit QtDetails(DetailsPane& pane);

  QWidget* Widget() override { return this; }
  void SetFocus() override;
  void Update() override;
  void UpdateRows() override { m_fields->Update(); }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QLayout* MakeButtons();

  DetailsPane& m_pane;
  QLabel* const m_message;
  QSplitter* const m_split;
  DetailFields* const m_fields;
  DetailText* const m_text;
  QPushButton *const m_all, *const m_pretty;
};
