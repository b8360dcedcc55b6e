#include "controls/text/ui/row_look.h"

#include "docview/ui/high_contrast.h"
#include "docview/ui/hit_color.h"
#include "docview/ui/mixed_color.h"

namespace {

constexpr double kStripe = 0.035, kSoft = 0.5, kGrid = 0.07;
constexpr double kPale = 0.3, kPaleInDark = 0.45;  // a selection without the keyboard
constexpr double kAccent = 0.35;

struct Tint {
  QColor color;
  double inLight, inDark;
};

Tint TintOf(RowTint tint) {
  if (tint == RowTint::Error) return {QColor(0xe5, 0x2b, 0x2b), 0.08, 0.16};
  return {QColor(0xff, 0xc4, 0x00), 0.12, 0.10};
}

// Nothing but the palette's own colours: severities have their signs, and marks their numbers.
RowLook HighContrastLook(const QPalette& palette, const RowKind& row) {
  const auto color = [&palette](QPalette::ColorRole role) {
    return palette.color(QPalette::Active, role);
  };
  RowLook look;
  look.background = color(row.selected ? QPalette::Highlight : QPalette::Base);
  look.text = color(row.selected ? QPalette::HighlightedText : QPalette::Text);
  look.soft = look.grid = look.text;
  look.accent = color(QPalette::Text);
  look.hit = HitColor(palette);
  look.hitText = color(QPalette::Text);
  return look;
}

}  // namespace

RowLook LookOf(const QPalette& palette, const RowKind& row) {
  if (IsHighContrast(palette)) return HighContrastLook(palette, row);
  const auto color = [&palette](QPalette::ColorRole role) {
    return palette.color(QPalette::Active, role);
  };
  const QColor base = color(QPalette::Base), text = color(QPalette::Text);
  const QColor highlight = color(QPalette::Highlight);
  const bool dark = base.lightness() < text.lightness();
  RowLook look;
  look.text = text;
  look.background = base;
  if (row.selected && row.keyboard) {
    look.background = highlight;
    look.text = color(QPalette::HighlightedText);
  } else if (row.selected) {
    look.background = Mixed(base, highlight, dark ? kPaleInDark : kPale);
  } else if (row.colours) {
    look.background = QColor(QRgb{row.colours->ground});
    look.text = QColor(QRgb{row.colours->ink});
  } else {
    if (row.tint != RowTint::None) {
      const Tint tint = TintOf(row.tint);
      look.background = Mixed(base, tint.color, dark ? tint.inDark : tint.inLight);
    }
    if (row.stripe) look.background = Mixed(look.background, text, kStripe);
  }
  look.soft = Mixed(look.background, look.text, kSoft);
  look.grid = Mixed(look.background, look.text, kGrid);
  look.accent = Mixed(highlight, text, kAccent);
  look.hit = HitColor(palette);
  look.hitText = text;
  return look;
}
