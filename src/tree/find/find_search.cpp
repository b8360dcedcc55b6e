#include "tree/find/find_search.h"

#include <chrono>

#include "tree/find/find_dialog.h"
#include "tree/find/search_box.h"
#include "tree/regex/regex.h"

namespace {

using Clock = std::chrono::steady_clock;

// How long a search may hold the window: first, before its box comes up, and then at a time.
constexpr std::chrono::milliseconds kFirstPiece{300}, kPiece{40};
// Steps of the matcher and candidates between two looks at the clock.
constexpr std::uint64_t kStepsPerLook = 50000;
constexpr unsigned kTextsPerLook = 128;

int g_boxes = 0;  // searches whose box is up

class Search {
 public:
  explicit Search(FindWalk& walk) : m_walk(walk) {}

  FindResult Result() const { return m_result; }
  // Works until the search is done, then true, or the time is up. Always goes on a little.
  bool Work(std::chrono::milliseconds time) {
    const Clock::time_point end = Clock::now() + time;
    do {
      for (unsigned texts = 0; texts < kTextsPerLook && !m_unfinished; ++texts)
        if (TestNext()) return true;
      if (m_unfinished && Take(RegexResumeText(m_text, kStepsPerLook))) return true;
    } while (Clock::now() < end);
    return false;
  }

 private:
  bool TestNext() {
    const std::optional<std::string_view> text = m_walk.NextText();
    if (!text) {
      m_result = FindResult::NotFound;
      return true;
    }
    m_text = *text;
    return Take(RegexBeginText(m_text, kStepsPerLook));
  }
  bool Take(RegexAnswer answer) {
    m_unfinished = answer == RegexAnswer::Unfinished;
    if (answer == RegexAnswer::Yes) m_result = FindResult::Hit;
    return answer == RegexAnswer::Yes;
  }

  FindWalk& m_walk;
  std::string_view m_text;
  bool m_unfinished = false;  // the test of m_text
  FindResult m_result = FindResult::Cancelled;
};

}  // namespace

FindResult RunSearch(Host& host, FindWalk& walk) {
  Search search(walk);
  if (search.Work(kFirstPiece)) return search.Result();
  CSearchBox box(host, [&search] { return search.Work(kPiece); });
  ++g_boxes;
  box.DoModal();
  --g_boxes;
  return search.Result();
}

bool SearchIsRunning() {
  return g_boxes > 0;
}

bool RunFindDialog(Host& host) {
  CFindDialog dialog(host);
  return dialog.DoModal() == CDialog::kIdOk;
}

void TellNotFound(Host& host) {
  host.MessageBox({.text = "Text not found.", .icon = BoxIcon::None});
}
