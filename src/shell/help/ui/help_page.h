// The browser of the help: pages in Markdown, with space around the text. Pictures are never wider
// than the page. In dark colours a picture "a.png" is replaced by "a-dark.png" if there is one.
//
// Threads  Interface thread.
#pragma once

#include <QTextBrowser>

class HelpPage final : public QTextBrowser {
 public:
  using QTextBrowser::QTextBrowser;
  QVariant loadResource(int type, const QUrl& name) override;

 protected:
  void doSetSource(const QUrl& name, QTextDocument::ResourceType) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Fit(QTextCursor picture, QTextImageFormat format);
  void FitPictures();
};
