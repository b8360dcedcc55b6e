// The commands of marks and notes of one window: mark the selected traces, write a note, go to the
// next one.
//
// Shape    The colour that was used last is kept in the settings, for all windows.
// Owner    Owned by the frame; borrows what it calls.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "docview/commands/command.h"
#include "docview/host.h"

class TracePane;

class MarkCommands {
 public:
  using Shown = std::function<TracePane*()>;
  using Say = std::function<void(const std::string&)>;
  using Map = std::function<void(unsigned id, std::function<void()> run,
                                 std::function<void(CCmdUI&)> update)>;
  // `shown` gives the pane of the frame, null before it has one; `say` shows a line of text, until
  // it is empty.
  MarkCommands(Host& host, Shown shown, Say say)
      : m_host(host), m_shown(std::move(shown)), m_say(std::move(say)) {}
  void MapWith(const Map& map);

  // Marks the selected traces, or takes the mark away if each of them has it. Nothing: in the
  // colour that was used last; then any mark is taken away.
  void Mark(std::optional<std::uint8_t> colour);
  void EditNote();
  // To the next trace with a mark or a note that the pane shows; goes around, and says so.
  void GoOn(bool forward);

  static std::uint8_t LastColour();

 private:
  void MapColours(const Map& map);
  void Told(const std::string& text);

  Host& m_host;
  const Shown m_shown;
  const Say m_say;
  bool m_told = false;
};
