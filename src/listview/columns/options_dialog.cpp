#include "listview/columns/options_dialog.h"

#include <charconv>
#include <limits>
#include <optional>
#include <system_error>

#include "base/text.h"
#include "listview/columns/columns.h"
#include "settings/registry.h"
#include "views/stored_views.h"

namespace {

constexpr unsigned kTicDifferenceBox = 1078;
constexpr unsigned kUtcBox = 1167;
constexpr unsigned kTintBox = 1168;
constexpr unsigned kRememberBox = 1169;

// The sign and digits of an integer of any size; a number beyond 64 bits becomes the largest one.
std::optional<std::int64_t> ParseInteger(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return std::nullopt;
  const char* begin = text.data() + first;
  const char* end = text.data() + text.find_last_not_of(" \t") + 1;
  if (*begin == '+' && end - begin > 1 && begin[1] != '-') ++begin;
  std::int64_t number = 0;
  const auto [rest, error] = std::from_chars(begin, end, number);
  if (rest != end || error == std::errc::invalid_argument) return std::nullopt;
  if (error == std::errc::result_out_of_range) return std::numeric_limits<std::int64_t>::max();
  return number;
}

const COptionsDlg::Box* FindBox(unsigned id) {
  for (const COptionsDlg::Box& box : COptionsDlg::Boxes())
    if (box.id == id) return &box;
  return nullptr;
}

std::int32_t& FlagOf(const COptionsDlg::Box& box) {
  return g_activeColumns[static_cast<std::size_t>(box.column)];
}

}  // namespace

const std::vector<COptionsDlg::Box>& COptionsDlg::Boxes() {
  static const std::vector<Box> boxes = {
      {1159, "Severity", 0, true, &COptionsDlg::m_severity},
      {1041, "Count", 1, true, &COptionsDlg::m_count},
      {1072, "Tic Count", 2, true, &COptionsDlg::m_ticCount},
      {kTicDifferenceBox, "Tic Difference", 3, true, &COptionsDlg::m_ticDifference},
      {1042, "Time", 4, true, &COptionsDlg::m_time},
      {1044, "Machine", 5, true, &COptionsDlg::m_machine},
      {1045, "Application", 6, true, &COptionsDlg::m_application},
      {1066, "Component", 7, true, &COptionsDlg::m_component},
      {1067, "Category", 8, true, &COptionsDlg::m_category},
      {1158, "Attributes", 9, true, &COptionsDlg::m_attributes},
      {1046, "PID", 10, true, &COptionsDlg::m_pid},
      {1047, "TID", 11, true, &COptionsDlg::m_tid},
      // Kept: "Trace" is the flag of column 14, "Stack". With the defaults it is unticked though
      // the column "Trace" is shown. It is disabled, so that a click cannot mislead anybody.
      {1071, "Trace", 14, false, &COptionsDlg::m_stack},
  };
  return boxes;
}

std::string COptionsDlg::LimitRange() {
  return GroupDigits(kLimitMin) + " to " + GroupDigits(kLimitMax);
}

const char* COptionsDlg::Title() {
  return "Options";
}

COptionsDlg::COptionsDlg(Host& host, const ColumnFlags& shown)
    : CDialog(host),
      m_limit(g_traceLimit),
      m_utc(g_useUtc),
      m_tint(g_tintSeverity),
      m_remember(AreViewsRemembered()) {
  for (const Box& box : Boxes()) this->*box.member = shown[static_cast<std::size_t>(box.column)];
}

void COptionsDlg::OnBoxClicked(unsigned id) {
  if (id == kUtcBox) {
    m_utc = !m_utc;
    return;
  }
  if (id == kTintBox) {
    m_tint = !m_tint;
    return;
  }
  if (id == kRememberBox) {
    m_remember = !m_remember;
    return;
  }
  const Box* box = FindBox(id);
  // Kept: the box 1078 has no such handler. The exchange sets its value nevertheless.
  if (!box || !box->enabled || id == kTicDifferenceBox) return;
  this->*box->member = !(this->*box->member);
}

bool COptionsDlg::Exchange(const std::vector<std::pair<unsigned, bool>>& boxes, bool utc,
                           const std::string& limitText, bool tint, bool remember) {
  for (const auto& [id, ticked] : boxes)
    if (const Box* box = FindBox(id); box && box->enabled) this->*box->member = ticked;
  m_utc = utc;
  m_tint = tint;
  m_remember = remember;
  const std::optional<std::int64_t> limit = ParseInteger(limitText);
  if (!limit) {
    GetHost().MessageBox({.text = "Enter an integer."});
    return false;
  }
  if (*limit < kLimitMin || *limit > kLimitMax) {
    GetHost().MessageBox({.text = "Enter an integer between " + std::to_string(kLimitMin) +
                                  " and " + std::to_string(kLimitMax) + "."});
    return false;
  }
  m_limit = static_cast<std::uint32_t>(*limit);
  return true;
}

void ApplyOptions(const COptionsDlg& dialog) {
  for (const COptionsDlg::Box& box : COptionsDlg::Boxes()) FlagOf(box) = dialog.*box.member;
  CountColumnChoice();
  g_traceLimit = dialog.m_limit;
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Trace Limit", g_traceLimit);
  g_useUtc = dialog.m_utc != 0;
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Coordinated Universal Time", g_useUtc ? 1u : 0u);
  g_tintSeverity = dialog.m_tint != 0;
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Tint Warnings and Errors", g_tintSeverity ? 1u : 0u);
  RememberViews(dialog.m_remember != 0);
  StoreActiveColumns();
}
