#include "tree/find/find_search.h"

#include "docview/dialogs/long_work.h"
#include "tree/find/find_dialog.h"
#include "tree/regex/regex.h"

namespace {

// Matcher steps and candidates per part.
constexpr std::uint64_t kStepsPerPart = 50000;
constexpr unsigned kTextsPerPart = 128;

class Search final : public LongWork {
 public:
  explicit Search(FindWalk& walk) : m_walk(walk) {}

  FindResult Result() const { return m_result; }
  bool DoPart() override {
    for (unsigned texts = 0; texts < kTextsPerPart && !m_unfinished; ++texts) {
      if (m_walk.Prepare()) return false;
      if (TestNext()) return true;
    }
    return m_unfinished && Take(RegexResumeText(m_text, kStepsPerPart));
  }

 private:
  bool TestNext() {
    const std::optional<std::string_view> text = m_walk.NextText();
    if (!text) {
      m_result = FindResult::NotFound;
      return true;
    }
    m_text = *text;
    return Take(RegexBeginText(m_text, kStepsPerPart));
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

FindResult RunSearch(Host& host, CDocument* document, FindWalk& walk) {
  Search search(walk);
  RunLongWork(host, document, {CFindDialog::Title(), "Searching...", "find"}, search);
  return search.Result();
}

bool RunFindDialog(Host& host) {
  CFindDialog dialog(host);
  return dialog.DoModal() == CDialog::kIdOk;
}

void ReportNotFound(Host& host) {
  host.MessageBox({.text = "Text not found.", .icon = BoxIcon::None});
}
