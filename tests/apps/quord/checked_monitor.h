// The stream of a monitor, with a check of its counts after each frame.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quor/protocol/frames.h"
#include "quor/protocol/quor.pb.h"
#include "records/name_map.h"
#include "records/raw_trace.h"

struct SeenTrace {
  std::uint32_t number = 0;
  std::string machine, app, component, category, text, pid;
};

class CheckedMonitor : private DataSink {
 public:
  // The traces of the application itself.
  std::uint64_t Count(const std::string& app) const {
    std::uint64_t count = 0;
    for (const SeenTrace& trace : traces) count += trace.app == app && trace.component != "Quor";
    return count;
  }
  // All traces that were sent, as far as this monitor knows.
  std::uint64_t Sum() const { return delivered + lost + gaps; }

  bool keepTraces = true;
  std::vector<SeenTrace> traces;
  std::vector<std::string> losses;
  std::uint64_t delivered = 0, lost = 0;  // of all streams, by the ledgers
  std::uint64_t gaps = 0;                 // between streams
  std::map<std::string, std::uint64_t> serials;

 protected:
  ~CheckedMonitor() = default;
  void BeginConnection() {
    m_words.clear();
    m_names.clear();
    m_frameNumbered = 0;
    m_expectsLedger = false;
  }
  void BeginStream() { m_firstWords = true; }
  // The first ledger of the stream has come.
  bool StreamBegan() const { return !m_firstWords; }
  // The ledger of each data frame has come.
  bool IsCounted() const { return !m_expectsLedger; }
  void TakeData(Bytes body) {
    std::string why;
    EXPECT_FALSE(m_expectsLedger) << "a ledger follows each data frame";
    EXPECT_TRUE(ReadDataBody(body, *this, &why)) << why;
    m_expectsLedger = true;
  }
  void TakeLedger(const quor::wire::Ledger& ledger) {
    std::uint64_t now = 0;
    for (const auto& word : ledger.sources()) {
      const std::uint64_t base = word.serial() - word.delivered() - word.lost();
      auto& before = m_words[word.instance()];
      std::uint64_t& serial = serials[word.instance()];
      if (!before.second) {
        before.second = true;
        // A gap between streams; before the first stream there is none.
        if (m_streams > 0 && base > serial) gaps += base - serial;
      } else {
        EXPECT_EQ(base, before.first.serial() - before.first.delivered() - before.first.lost());
      }
      now += word.delivered() - before.first.delivered();
      lost += word.lost() - before.first.lost();
      before.first = word;
      serial = word.serial();
    }
    TakeForgotten(ledger);
    delivered += now;
    EXPECT_EQ(now, m_frameNumbered) << "the ledger counts what the frame brought";
    m_frameNumbered = 0;
    m_expectsLedger = false;
    if (std::exchange(m_firstWords, false)) ++m_streams;
  }

 private:
  // A source that is missing from the first ledger of a stream was forgotten: the sum includes its
  // serial.
  void TakeForgotten(const quor::wire::Ledger& ledger) {
    if (ledger.has_forgotten()) {
      std::uint64_t known = m_forgotten;
      for (const auto& [instance, serial] : serials)
        if (!m_words.contains(instance) && m_gone.insert(instance).second) known += serial;
      if (m_streams > 0 && ledger.forgotten() > known) gaps += ledger.forgotten() - known;
      m_forgotten = ledger.forgotten();
    }
    for (const auto& word : ledger.forgotten_sources()) {
      EXPECT_TRUE(m_gone.insert(word.instance()).second);
      EXPECT_EQ(word.serial(), serials[word.instance()]);
      m_forgotten += word.serial();
    }
  }
  void OnName(HubNameId id, std::string_view utf8) override { m_names[id] = utf8; }
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    const RawHubTrace raw(record);
    const bool numbered = raw.SequenceNumber() != kNoSequenceNumber;
    if (numbered) ++m_frameNumbered;
    if (numbered && !keepTraces) return;
    SeenTrace trace{raw.SequenceNumber(),    Name(raw.MachineId()),  Name(raw.AppId()),
                    Name(raw.ComponentId()), Name(raw.CategoryId()), std::string(raw.Text()),
                    Name(raw.PidId())};
    if (!numbered) losses.push_back(trace.text);
    if (keepTraces) traces.push_back(std::move(trace));
  }
  std::string Name(HubNameId id) {
    const auto known = m_names.find(id);
    EXPECT_NE(known, m_names.end()) << "a name stands before its first trace";
    return known == m_names.end() ? "" : known->second;
  }

  std::map<HubNameId, std::string> m_names;
  std::map<std::string, std::pair<quor::wire::Ledger::Source, bool>> m_words;
  std::set<std::string> m_gone;
  std::uint64_t m_forgotten = 0;
  std::uint64_t m_frameNumbered = 0;
  unsigned m_streams = 0;
  bool m_expectsLedger = false, m_firstWords = false;
};
