#include "palette.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>

#include "shell/look/ui/clear_fusion.h"

namespace {

QPalette DarkPalette() {
  const QColor window(0x2b, 0x2d, 0x30), base(0x1e, 0x1f, 0x22), text(0xdf, 0xe1, 0xe5);
  const QColor faint(0x7d, 0x82, 0x8a), accent(0x35, 0x74, 0xf0);
  QPalette dark;
  dark.setColor(QPalette::Window, window);
  dark.setColor(QPalette::WindowText, text);
  dark.setColor(QPalette::Base, base);
  dark.setColor(QPalette::AlternateBase, QColor(0x25, 0x27, 0x2a));
  dark.setColor(QPalette::Text, text);
  dark.setColor(QPalette::PlaceholderText, faint);
  dark.setColor(QPalette::Button, QColor(0x39, 0x3b, 0x40));
  dark.setColor(QPalette::ButtonText, text);
  dark.setColor(QPalette::BrightText, Qt::white);
  dark.setColor(QPalette::ToolTipBase, QColor(0x39, 0x3b, 0x40));
  dark.setColor(QPalette::ToolTipText, text);
  dark.setColor(QPalette::Light, QColor(0x4e, 0x51, 0x57));
  dark.setColor(QPalette::Midlight, QColor(0x43, 0x45, 0x4a));
  dark.setColor(QPalette::Mid, QColor(0x26, 0x28, 0x2b));
  dark.setColor(QPalette::Dark, QColor(0x1a, 0x1b, 0x1e));
  dark.setColor(QPalette::Shadow, Qt::black);
  dark.setColor(QPalette::Highlight, QColor(0x2e, 0x52, 0x8f));
  dark.setColor(QPalette::HighlightedText, Qt::white);
  dark.setColor(QPalette::Link, QColor(0x6f, 0xb4, 0xff));
  dark.setColor(QPalette::LinkVisited, QColor(0xb3, 0x9d, 0xff));
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
    dark.setColor(QPalette::Disabled, role, faint);
  // The style uses it for the shadow of disabled texts.
  dark.setColor(QPalette::Disabled, QPalette::Light, Qt::transparent);
  dark.setColor(QPalette::Inactive, QPalette::Highlight, QColor(0x43, 0x45, 0x4a));
  dark.setColor(QPalette::Disabled, QPalette::Highlight, accent.darker());
  return dark;
}

}  // namespace

void UseFusion(bool dark) {
  QApplication::setStyle(new ClearFusion);
  QApplication::setPalette(dark ? DarkPalette() : QApplication::style()->standardPalette());
}

void UseSystemStyle() {
  if (QApplication::style()->name() == QLatin1String("fusion"))
    QApplication::setStyle(new ClearFusion);
}
