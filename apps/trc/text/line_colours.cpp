#include "text/line_colours.h"

#include <cstdlib>

#include "records/record_fields.h"

namespace {

// Six steps of each channel from 16 on, and greys from 232 on.
constexpr unsigned kCube = 16, kGreys = 232, kEnd = 256, kSide = 6;
constexpr std::uint8_t kSteps[kSide] = {0, 95, 135, 175, 215, 255};

unsigned Distance(Colour a, Colour b) {
  const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
  return static_cast<unsigned>(red * red + green * green + blue * blue);
}

std::string Code(Colour colour, bool trueColour) {
  if (!trueColour) return "5;" + std::to_string(NearestOf256(colour));
  return "2;" + std::to_string(colour.red) + ";" + std::to_string(colour.green) + ";" +
         std::to_string(colour.blue);
}

}  // namespace

bool IsTrueColour() {
  const char* const said = getenv("COLORTERM");
  return said && (std::string_view(said) == "truecolor" || std::string_view(said) == "24bit");
}

Colour ColourOf256(unsigned number) {
  if (number >= kGreys) {
    const auto grey = static_cast<std::uint8_t>(8 + 10 * (number - kGreys));
    return {grey, grey, grey};
  }
  const unsigned place = number - kCube;
  return {kSteps[place / kSide / kSide], kSteps[place / kSide % kSide], kSteps[place % kSide]};
}

unsigned NearestOf256(Colour colour) {
  unsigned nearest = kCube;
  for (unsigned number = kCube + 1; number < kEnd; ++number)
    if (Distance(ColourOf256(number), colour) < Distance(ColourOf256(nearest), colour))
      nearest = number;
  return nearest;
}

LineColours::LineColours(ColourProgramPtr program, const NameMap& names, bool trueColour)
    : m_judge(std::move(program), names) {
  for (const ColourRule& rule : m_judge.Program().Rules())
    m_codes.push_back("\x1b[38;" + Code(rule.ink, trueColour) + ";48;" +
                      Code(rule.ground, trueColour) + "m");
}

std::string_view LineColours::Of(const TraceEvent_i& trace, const WherePrevious& before,
                                 const WhereClock& clock) {
  m_judge.BeginPage(clock);
  const ColourRule* const rule =
      m_judge.Of(trace, [&] { return std::optional<WherePrevious>(before); }).rule;
  // Another trace may come to its place, and no line is written twice.
  m_judge.Forget(&trace);
  if (!rule) return {};
  return m_codes[static_cast<std::size_t>(rule - m_judge.Program().Rules().data())];
}

WherePrevious PreviousOf(const TraceEvent_i& trace) {
  WherePrevious previous;
  previous.tic = trace.GetTicCount();
  previous.machine = trace.GetMachineId();
  previous.pid = trace.GetPidId();
  return previous;
}

std::optional<std::int64_t> MomentOf(const TraceEvent_i& trace) {
  return MomentOfStamp(std::uint64_t{trace.GetDate()} << 32 | trace.GetTime());
}
