#include "shell/help/ui/help_page.h"

#include <QTextBlock>
#include <QTextTable>
#include <algorithm>

namespace {

constexpr int kLineHeight = 118;  // percent
constexpr int kHelpMarginPx = 28;

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

// Tables with thin lines and space around their texts.
void StyleTables(QTextDocument& page, const QPalette& palette) {
  QColor line = palette.color(QPalette::Text);
  line.setAlphaF(0.25f);
  for (QTextFrame* frame : page.rootFrame()->childFrames()) {
    auto* table = qobject_cast<QTextTable*>(frame);
    if (!table) continue;
    QTextTableFormat format = table->format();
    format.setCellSpacing(0);
    format.setCellPadding(6);
    format.setBorder(1);
    format.setBorderCollapse(true);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(line);
    format.setTopMargin(8);
    format.setBottomMargin(4);
    table->setFormat(format);
  }
}

// Space between the lines, and above and below the headings. A line's height follows that of its
// picture.
void StyleBlocks(QTextDocument& page) {
  for (QTextBlock block = page.begin(); block.isValid(); block = block.next()) {
    QTextBlockFormat format = block.blockFormat();
    if (!block.text().contains(QChar::ObjectReplacementCharacter))
      format.setLineHeight(kLineHeight, QTextBlockFormat::ProportionalHeight);
    if (format.headingLevel() != 0) {
      format.setTopMargin(format.headingLevel() == 1 ? 0 : 18);
      format.setBottomMargin(8);
    }
    QTextCursor(block).setBlockFormat(format);
  }
}

}  // namespace

QVariant HelpPage::loadResource(int type, const QUrl& name) {
  if (type != QTextDocument::ImageResource) return QTextBrowser::loadResource(type, name);
  const QString path = QStringLiteral(":") + source().resolved(name).path();
  QImage picture;
  if (IsDark(palette()))
    picture.load(QString(path).replace(QStringLiteral(".png"), QStringLiteral("-dark.png")));
  if (picture.isNull()) picture.load(path);
  return picture;
}

void HelpPage::doSetSource(const QUrl& name, QTextDocument::ResourceType) {
  QTextBrowser::doSetSource(name, QTextDocument::MarkdownResource);
  document()->setDocumentMargin(kHelpMarginPx);
  StyleTables(*document(), palette());
  StyleBlocks(*document());
  FitPictures();
}

void HelpPage::resizeEvent(QResizeEvent* event) {
  QTextBrowser::resizeEvent(event);
  FitPictures();
}

// The text engine would draw a picture at another size without smoothing it.
void HelpPage::Fit(QTextCursor picture, QTextImageFormat format) {
  const QUrl name = document()->baseUrl().resolved(QUrl(format.name()));
  const QImage image = loadResource(QTextDocument::ImageResource, format.name()).value<QImage>();
  const int width = std::min(image.width(), viewport()->width() - 2 * kHelpMarginPx);
  if (image.isNull() || width <= 0 || format.width() == width) return;
  const qreal ratio = devicePixelRatioF();
  QImage drawn = image.scaledToWidth(qRound(width * ratio), Qt::SmoothTransformation);
  drawn.setDevicePixelRatio(ratio);
  document()->addResource(QTextDocument::ImageResource, name, drawn);
  format.setWidth(width);
  format.setHeight(qRound(drawn.height() / ratio));
  picture.setCharFormat(format);
}

void HelpPage::FitPictures() {
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
    for (auto at = block.begin(); !at.atEnd(); ++at) {
      const QTextFragment part = at.fragment();
      const QTextImageFormat format = part.charFormat().toImageFormat();
      if (!format.isValid()) continue;
      QTextCursor picture(document());
      picture.setPosition(part.position());
      picture.setPosition(part.position() + part.length(), QTextCursor::KeepAnchor);
      Fit(picture, format);
      break;  // a paragraph has one; the change ends the walk through its parts
    }
}
