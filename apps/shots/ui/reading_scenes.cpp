#include "reading_scenes.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPalette>
#include <QWidget>

#include "docview/commands/command_ids.h"
#include "listview/colours/active_colours.h"
#include "listview/rows/trace_view.h"
#include "render.h"
#include "shell/mdi/ui/child_window.h"
#include "shell/tessera_app.h"
#include "shell/ui/qt_main_frame.h"
#include "support/trc_image.h"
#include "where/colours/shipped_colours.h"

namespace {

constexpr int kReadingMs = 600;
constexpr int kFortyRules = 40;
const QSize kSmallScreen(800, 560);

CTraceView* ReadList(CTesseraApp& tessera) {
  CMDIChildWnd* const child = tessera.Frame()->MDIGetActive();
  return child ? dynamic_cast<CTraceView*>(child->GetActiveView()) : nullptr;
}

bool HasDarkLists(const QWidget& window) {
  const QPalette& palette = window.palette();
  return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

Colour ColourFrom(const QColor& color) {
  return {static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
          static_cast<std::uint8_t>(color.blue())};
}

// Each rule holds for the numbers of some traces, so that neighbours differ.
ColourRules RulesOfAllColours(bool dark) {
  ColourRules rules;
  for (int rule = 0; rule < kFortyRules; ++rule) {
    const int hue = rule * 360 / kFortyRules;
    const QColor ink = dark ? QColor::fromHsl(hue, 200, 215) : QColor::fromHsl(hue, 255, 50);
    const QColor ground = dark ? QColor::fromHsl(hue, 120, 45) : QColor::fromHsl(hue, 220, 225);
    std::string where = "count in {";
    for (int count = rule + 1; count <= 2000; count += kFortyRules)
      where += std::to_string(count) + (count + kFortyRules <= 2000 ? ", " : "}");
    rules.push_back(
        {"Colour " + std::to_string(rule + 1), where, ColourFrom(ink), ColourFrom(ground)});
  }
  return rules;
}

// As a desktop's theme of high contrast.
QPalette BlackAndWhite() {
  QPalette palette(Qt::white, Qt::black, Qt::white, Qt::gray, Qt::lightGray, Qt::white, Qt::white,
                   Qt::black, Qt::black);
  palette.setColor(QPalette::Highlight, Qt::yellow);
  palette.setColor(QPalette::HighlightedText, Qt::black);
  return palette;
}

}  // namespace

void ReadingScenes::Run(unsigned command) {
  m_tessera.Frame()->OnCommand(command);
  m_scenes.Settle();
}

void ReadingScenes::Save(const QString& name) {
  QElapsedTimer clock;
  for (clock.start(); clock.elapsed() < kReadingMs;) m_scenes.Settle();
  m_scenes.Save(m_scenes.Window(), QStringLiteral("reading-") + name);
}

void ReadingScenes::Mark() {
  CTraceView& view = *ReadList(m_tessera);
  DocNotes& notes = view.Document().Notes();
  const int row = view.List().NextItem(-1, kRowFocused);
  const auto at = static_cast<std::uint64_t>(std::max(row, 8));
  notes.Mark({at - 6}, 1);
  notes.Mark({at - 3, at - 2}, 4);
  notes.SetNote(at - 6, "the first retry");
}

void ReadingScenes::Unmark() {
  DocNotes& notes = ReadList(m_tessera)->Document().Notes();
  std::vector<std::uint64_t> all;
  for (const auto& [number, record] : notes.Notes().Records()) all.push_back(number);
  notes.Remove(all);
}

void ReadingScenes::FortyColours() {
  CTraceView& view = *ReadList(m_tessera);
  const int row = view.List().NextItem(-1, kRowFocused);
  view.List().EnsureVisible(0);
  UseColours({true, RulesOfAllColours(HasDarkLists(m_scenes.Window()))}, nullptr);
  Save(QStringLiteral("colours"));
  view.List().EnsureVisible(row);
}

void ReadingScenes::All() {
  if (!ReadList(m_tessera)) return;
  QWidget& window = m_scenes.Window();
  auto& face = static_cast<QtMainFrame&>(*m_tessera.Frame()->Face());
  face.Area().Active()->showMaximized();
  m_scenes.Settle();
  FortyColours();
  const ColourGround ground = HasDarkLists(window) ? ColourGround::Dark : ColourGround::Light;
  UseColours({true, ShippedColours(ground)}, nullptr);
  Mark();
  Run(ID_VIEW_OVERVIEW);
  Run(ID_VIEW_DETAILS);
  RowList& rows = ReadList(m_tessera)->List();
  rows.SetFocus();
  const int focused = rows.NextItem(-1, kRowFocused);
  rows.EnsureVisible(focused);
  Save(QStringLiteral("all"));
  const QPalette palette = QApplication::palette();
  QApplication::setPalette(BlackAndWhite());
  Save(QStringLiteral("contrast"));
  QApplication::setPalette(palette);
  const QSize size = window.size();
  window.resize(kSmallScreen);
  m_scenes.Settle();
  rows.EnsureVisible(focused);
  Save(QStringLiteral("small"));
  window.resize(size);
  Run(ID_VIEW_DETAILS);
  Run(ID_VIEW_OVERVIEW);
  Unmark();
  UseColours({}, nullptr);
  face.Area().Active()->showNormal();
  m_scenes.Settle();
}

void ReadingScenes::Empty(const std::string& path) {
  if (!m_tessera.OpenDocumentFile(TrcImage().WriteTo(path))) return;
  WaitForLoads(m_tessera);
  static_cast<QtMainFrame&>(*m_tessera.Frame()->Face()).Area().Active()->showMaximized();
  Run(ID_VIEW_MARKS);
  Run(ID_VIEW_OVERVIEW);
  Save(QStringLiteral("empty"));
  Run(ID_VIEW_OVERVIEW);
  Run(ID_VIEW_MARKS);
}
