// The fake is a report list: it passes the contract that the control on the screen passes.
#include "support/fake_report_list.h"

#include "support/report_list_contract.h"

namespace {

class FakeReportHarness {
 public:
  explicit FakeReportHarness(ReportListOwner& owner) : m_list(owner) { m_list.SetFocus(); }
  ReportList& List() { return m_list; }
  void SetPage(int rows) { m_list.SetPage(rows); }
  void SetRoom(int roomPx) { m_list.SetWidth(roomPx); }
  void DragHeading(int column, int widthPx) { m_list.DragHeading(column, widthPx); }
  void ScrollTo(int row) { m_list.ScrollTo(row); }
  int Top() const { return m_list.Top(); }
  std::string Sort() const { return m_list.Sort(); }
  void Click(int row, bool control = false, int column = 0) { m_list.Click(row, control, column); }
  bool LooksSelected(int row, int column) const { return m_list.LooksSelected(row, column); }
  bool LooksRight(int, int column) const { return m_list.LooksRight(column); }
  bool LooksWhole(int row, int column) const { return m_list.LooksWhole(row, column); }
  void DoubleClick(int row) { m_list.DoubleClick(row); }
  void ClickHeading(int column) { m_list.ClickHeading(column); }
  void PressHeadingKey(int column) { m_list.PressHeadingKey(column); }
  void PressSelectAll() { m_list.PressSelectAll(); }
  void Type(char letter) { m_list.Type(letter); }

 private:
  FakeReportList m_list;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ReportListContract, FakeReportHarness);

}  // namespace
