// What a terminal is told before the line of a trace, by colour rules.
//
// Shape    Each colour of 24 bits, or the nearest of the 256 that terminals have in common. Of
//          these the 16 that users choose themselves are not used.
// Owner    Shares the rules; borrows the names, which may grow meanwhile.
// Threads  One.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "where/colours/colour_judge.h"

// Does COLORTERM say that the terminal takes 24 bits?
bool IsTrueColour();
// The nearest of 16 to 255.
unsigned NearestOf256(Colour colour);
Colour ColourOf256(unsigned number);

class LineColours {
 public:
  LineColours(ColourProgramPtr program, const NameMap& names, bool trueColour = IsTrueColour());

  // Empty: no rule holds. `before`: the trace before in the file or stream.
  std::string_view Of(const TraceEvent_i& trace, const WherePrevious& before,
                      const WhereClock& clock);
  bool UsesEnd() const { return m_judge.Program().UsesEnd(); }

 private:
  ColourJudge m_judge;
  std::vector<std::string> m_codes;  // by rule
};

// The trace as the one before.
WherePrevious PreviousOf(const TraceEvent_i& trace);
// Its time.
std::optional<std::int64_t> MomentOf(const TraceEvent_i& trace);
