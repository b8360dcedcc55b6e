#include "quor/relay/source_ledger.h"

SourceLedger::Verdict SourceLedger::Take(std::uint64_t serial, std::uint64_t delivered,
                                         std::uint64_t lost) {
  if (delivered > serial || lost > serial - delivered) return Verdict::Torn;
  const std::uint64_t from = serial - delivered - lost;
  if (from == serial) return Verdict::Twice;
  std::uint64_t fresh = 0;
  for (const SerialRange& part : m_serials.Cover({from, serial})) fresh += part.Size();
  if (fresh == serial - from) {
    m_counts.delivered += delivered;
    m_counts.lost += lost;
    return Verdict::Deliver;
  }
  m_counts.lost += fresh;
  const bool isLate = fresh == 0 && m_serials.WasGivenUp(serial);
  (isLate ? m_counts.late : m_counts.twice) += delivered;
  return isLate ? Verdict::Late : Verdict::Twice;
}

std::uint64_t SourceLedger::GiveUpFirstHole() {
  const std::uint64_t lost = m_serials.GiveUpFirstHole();
  m_counts.lost += lost;
  return lost;
}
