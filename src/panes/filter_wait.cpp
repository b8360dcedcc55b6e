#include "panes/filter_wait.h"

#include "docview/dialogs/long_work.h"
#include "panes/trace_pane.h"

namespace {

class FilterWait final : public LongWork {
 public:
  FilterWait(const TracePane& pane, const std::function<void()>& step)
      : m_pane(pane), m_step(step) {}

  bool DoPart() override {
    if (m_pane.FilterProgress()) m_step();
    return !m_pane.FilterProgress();
  }
  std::optional<int> Progress() const override { return m_pane.FilterProgress(); }

 private:
  const TracePane& m_pane;
  const std::function<void()>& m_step;
};

}  // namespace

bool WaitForFilter(TracePane& pane, const std::function<void()>& step) {
  if (!pane.FilterProgress()) return true;
  FilterWait work(pane, step);
  return RunLongWork(pane.GetHost(), &pane.Document(), {"Tessera", "Filtering..."}, work);
}
