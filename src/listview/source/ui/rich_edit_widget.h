// The text control on the screen, with the numbers of its lines on the left.
//
// Shape    A character is a UTF-16 unit of Qt's text; a line is a block of its document.
// Owner    Owned by its view; a window that shows it only borrows it.
// Threads  Interface thread.
#pragma once

#include <QPlainTextEdit>
#include <vector>

#include "docview/ui/qt_control.h"
#include "listview/source/rich_edit.h"

class LineMargin;

class QtRichEdit final : public QPlainTextEdit, public RichEdit, public QtControl {
 public:
  explicit QtRichEdit(RichEditOwner& owner, QWidget* parent = nullptr);

  QWidget* Widget() override { return this; }
  void SetFocus() override { setFocus(Qt::OtherFocusReason); }

  void SetFormat(const RichEditFormat& format) override;
  void SetText(const std::string& text) override;
  std::string GetText() const override;
  void SetModify(bool modified) override { document()->setModified(modified); }
  int LineIndex(int line) const override;
  void SetSel(int from, int to) override;
  void MarkLine(int line) override;
  bool HasSelection() const override { return textCursor().hasSelection(); }
  std::string GetSelText() const override;
  void Copy() override { copy(); }
  bool FindText(const RichEditFind& find) override;

  // For the margin.
  struct ShownLine {
    int number = 0;  // from 0
    QRect place;     // in the viewport
  };
  std::vector<ShownLine> ShownLines() const;
  int MarkedLine() const { return m_markedLine; }  // -1: none

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;

 private:
  void GoTo(const QTextCursor& cursor);
  void EndLine();
  void PlaceMargin();

  // The caret was scrolled to and the user has not touched the text since: when the window changes
  // its size, the caret stays in the middle.
  bool m_keepCentred = false;
  bool m_settingText = false;
  LineMargin* m_margin;
  int m_markedLine = -1;
};
