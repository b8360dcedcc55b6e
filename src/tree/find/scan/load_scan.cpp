#include "tree/find/scan/load_scan.h"

#include <algorithm>

class LoadScan::Eye final : public Piece {
 public:
  explicit Eye(const RegexPlan& plan) : m_plan(plan) {}
  void See(const TraceList_t& traces, std::size_t from, std::ptrdiff_t behind) override {
    const TraceList_t::Reader reader(traces);
    const std::vector<ScanHit> hits = PieceScan(m_plan, reader, behind).Hits(from, reader.size());
    m_hits.insert(m_hits.end(), hits.begin(), hits.end());
  }
  const std::vector<ScanHit>& Hits() const { return m_hits; }

 private:
  const RegexPlan& m_plan;
  std::vector<ScanHit> m_hits;
};

std::unique_ptr<LoadSearch::Piece> LoadScan::NewPiece() {
  return std::make_unique<Eye>(m_plan);
}

void LoadScan::Take(Piece& piece, std::size_t first) {
  for (const ScanHit& hit : static_cast<Eye&>(piece).Hits())
    m_hits.emplace_back(first + hit.Place(), hit.IsSure());
}

LoadScan::Walk::Walk(const LoadScan& scan, const ScanOrder& order) : m_backward(order.backward) {
  const std::vector<ScanHit>& hits = scan.m_hits;
  const std::size_t split = order.start + (order.backward ? 1 : 0);
  const auto middle = std::partition_point(
      hits.begin(), hits.end(), [split](const ScanHit& hit) { return hit.Place() < split; });
  m_next = hits.data() + (middle - hits.begin());
  m_end = hits.data() + (order.backward ? 0 : hits.size());
}

const ScanHit* LoadScan::Walk::Next() {
  if (m_next == m_end) return nullptr;
  return m_backward ? --m_next : m_next++;
}
