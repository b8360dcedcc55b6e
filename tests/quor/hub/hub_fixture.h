// A hub that the test feeds, and streams that take everything.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "quor/hub/hub.h"
#include "quor/hub/stream_queue.h"
#include "quor/protocol/frames.h"
#include "records/record_fields.h"

// One application, from the hub's point of view.
class FedSource {
 public:
  FedSource(Hub& hub, const std::string& app, std::uint32_t pid = 7) : m_hub(hub) {
    Source source;
    for (std::size_t byte = 0; byte < 4; ++byte)
      source.instance[byte] = static_cast<std::uint8_t>(pid >> (8 * byte));
    source.machine = "here";
    source.app = app;
    source.pid = std::to_string(pid);
    m_source = hub.AddSource(source);
    Name(1, "here");
    Name(2, app);
    Name(3, "Net");
    Name(4, "Connect");
    Name(5, std::to_string(pid));
    Name(0, "");
  }
  void Name(std::uint16_t id, const std::string& text) { m_names.Enter(AppNameId{id}, text); }
  void Trace(const std::string& text, RecordFieldsOf<AppNameId> fields = {}) {
    constexpr AppNameId kUnset{};
    if (fields.machine == kUnset) fields.machine = AppNameId{1};
    if (fields.app == kUnset) fields.app = AppNameId{2};
    if (fields.component == kUnset) fields.component = AppNameId{3};
    if (fields.category == kUnset) fields.category = AppNameId{4};
    if (fields.pid == kUnset) fields.pid = fields.tid = AppNameId{5};
    fields.attributes = 1;
    fields.text = text;
    std::vector<std::uint8_t> record(kTraceFixedBytes + text.size());
    StoreRecord(record.data(), fields);
    m_hub.Take(m_source, m_names, record, {});
  }
  void Lose(std::uint64_t lost, const std::string& why) { m_hub.Lose(m_source, lost, why); }
  const std::shared_ptr<Source>& Get() const { return m_source; }

 private:
  Hub& m_hub;
  SourceNames m_names;
  std::shared_ptr<Source> m_source;
};

// What a peer of the stream reads: "number app component/category text", and its ledger.
class TakingStream final : public HubStream, public DataSink {
 public:
  explicit TakingStream(Hub& hub, const StreamLimits& limits = {})
      : m_hub(hub), m_queue(hub.Names(), limits) {
    hub.Add(*this);
    m_queue.Begin(hub.Sources());
  }
  ~TakingStream() { m_hub.Remove(*this); }

  void OnBatch(const SharedBatch& batch) override { m_queue.Push(change ? change(batch) : batch); }
  void OnDelivered() override {
    if (onDelivered) onDelivered();
  }
  StreamQueue& Queue() { return m_queue; }
  void Deliver() {
    m_hub.Seal();
    m_hub.Deliver();
  }
  // Reads everything that waits.
  std::vector<std::string> Read() {
    Deliver();
    m_lines.clear();
    Outgoing out;
    while (m_queue.Next(out)) Take(out);
    return m_lines;
  }
  void Take(const Outgoing& out) {
    std::vector<std::uint8_t> body;
    if (out.names) body.assign(out.names->begin(), out.names->end());
    body.insert(body.end(), out.records->begin(), out.records->end());
    EXPECT_LE(body.size(), kDataFrameBytesMax - 1);
    std::string why;
    EXPECT_TRUE(ReadDataBody(body, *this, &why)) << why;
    for (const auto& word : out.ledger.sources()) {
      ledger[word.instance()] = word;
      auto& began = m_began[word.instance()];
      const std::uint64_t base = word.serial() - word.delivered() - word.withheld() - word.lost();
      const bool isNew = m_known.insert(word.instance()).second;
      EXPECT_TRUE(isNew || base == began);
      began = base;
    }
    for (const auto& word : out.ledger.forgotten_sources()) m_forgotten += word.serial();
  }
  std::uint64_t Delivered() const {
    std::uint64_t sum = 0;
    for (const auto& [instance, word] : ledger) sum += word.delivered();
    return sum;
  }
  // The sum of the serials of forgotten sources, as the stream received it.
  std::uint64_t Forgotten() const { return m_forgotten; }
  std::uint64_t Lost() const {
    std::uint64_t sum = 0;
    for (const auto& [instance, word] : ledger) sum += word.lost();
    return sum;
  }
  std::uint64_t Withheld() const {
    std::uint64_t sum = 0;
    for (const auto& [instance, word] : ledger) sum += word.withheld();
    return sum;
  }
  std::function<SharedBatch(const SharedBatch&)> change;  // what the stream gets of each batch
  std::function<void()> onDelivered;
  std::map<std::string, quor::wire::Ledger::Source> ledger;
  std::map<HubNameId, std::string> names;
  std::uint64_t numbered = 0;

 private:
  void OnName(HubNameId id, std::string_view utf8) override {
    EXPECT_FALSE(names.contains(id)) << "a name is sent once";
    names[id] = std::string(utf8);
  }
  void OnTrace(const std::uint8_t* record, std::size_t) override {
    const RawHubTrace raw(record);
    for (const HubNameId id : raw.Ids().All())
      EXPECT_TRUE(names.contains(id)) << "the name stands before its first trace";
    const bool hasNumber = raw.SequenceNumber() != kNoSequenceNumber;
    if (hasNumber) ++numbered;
    m_lines.push_back((hasNumber ? std::to_string(raw.SequenceNumber()) : "-") + " " +
                      names[raw.AppId()] + " " + names[raw.ComponentId()] + "/" +
                      names[raw.CategoryId()] + " " + std::string(raw.Text()));
  }

  Hub& m_hub;
  StreamQueue m_queue;
  std::vector<std::string> m_lines;
  std::uint64_t m_forgotten = 0;
  std::map<std::string, std::uint64_t> m_began;
  std::set<std::string> m_known;
};
