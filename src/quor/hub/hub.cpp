#include "quor/hub/hub.h"

#include <algorithm>
#include <utility>

#include "records/raw_trace.h"

namespace {

constexpr const char* kUnknownName = "(a name that the application never entered)";

}  // namespace

std::shared_ptr<Source> Hub::AddSource(Source source) {
  // Another live source has this instance, by chance or by a lie: keep the two apart.
  while (IsAnothers(source))
    for (auto byte = source.instance.rbegin(); byte != source.instance.rend() && ++*byte == 0;)
      ++byte;
  if (auto known = Revive(source)) return known;
  source.firstSerial = source.serial;
  auto added = std::make_shared<Source>(std::move(source));
  m_sources[added->instance] = added;
  for (HubStream* const stream : m_streams) stream->OnSource(added);
  return added;
}

// A source that ended may come back, but only to the account that it was of.
bool Hub::IsAnothers(const Source& source) const {
  const auto known = m_sources.find(source.instance);
  if (known != m_sources.end() && !known->second->ended) return true;
  return m_batches == HubBatches::OfOneAccount && m_ended.HasAnothers(source);
}

std::shared_ptr<Source> Hub::Revive(const Source& source) {
  std::shared_ptr<Source> revived = m_ended.Take(source);
  if (!revived) return nullptr;
  m_sources[revived->instance] = revived;
  revived->ended = false;
  revived->firstSerial = revived->serial;  // for streams that have forgotten it
  revived->machine = source.machine;
  revived->app = source.app;
  revived->pid = source.pid;
  if (source.serial > revived->serial)
    Lose(revived, source.serial - revived->serial, "they were taken where nobody counts them");
  return revived;
}

void Hub::EndSource(const std::shared_ptr<Source>& source) {
  if (source->ended) return;
  source->ended = true;
  const auto known = m_sources.find(source->instance);
  if (known != m_sources.end() && known->second == source) m_sources.erase(known);
  if (const auto oldest = m_ended.Keep(source)) Forget(oldest);
}

void Hub::Forget(const std::shared_ptr<Source>& source) {
  m_ended.CountForgotten(*source);
  if (m_streams.empty()) return;
  if (m_batches == HubBatches::OfOneAccount) SealBefore(source);
  Open();
  m_builder.AppendForgotten(source);
  if (m_builder.IsFull()) Seal();
}

std::vector<std::shared_ptr<Source>> Hub::Sources() const {
  std::vector<std::shared_ptr<Source>> sources;
  m_ended.AppendTo(sources);
  for (const auto& [instance, source] : m_sources) sources.push_back(source);
  return sources;
}

std::uint32_t Hub::NextNumber() {
  if (m_number == kNoSequenceNumber) m_number = 0;
  return m_number++;
}

HubNameId Hub::Translate(AppNameId own, SourceNames& names, const Learn& learn) {
  HubNameId id{};
  if (names.Find(own, m_names, id)) return id;
  if (learn) learn();
  if (names.Find(own, m_names, id)) return id;
  // Enter it, so that a source that never names its ids costs no more than others.
  names.Enter(own, kUnknownName);
  names.Find(own, m_names, id);
  return id;
}

// The account of a process is the kernel's word, whatever text the program gives its process.
HubNameId Hub::TranslatePid(AppNameId own, SourceNames& names, const Learn& learn) {
  HubNameId id{};
  if (names.Account().empty()) return Translate(own, names, learn);
  if (names.FindPid(own, m_names, id)) return id;
  Translate(own, names, learn);
  names.FindPid(own, m_names, id);
  return id;
}

const TraceIds& Hub::TranslateAll(const std::uint8_t* record, SourceNames& names,
                                  const Learn& learn) {
  const TraceIdBytes own(record);
  if (m_last.version == names.Version() && m_last.own == own) return m_last.ids;
  const RawAppTrace raw(record);
  m_last.ids = {
      Translate(raw.MachineId(), names, learn),   Translate(raw.AppId(), names, learn),
      Translate(raw.ComponentId(), names, learn), Translate(raw.CategoryId(), names, learn),
      TranslatePid(raw.PidId(), names, learn),    Translate(raw.TidId(), names, learn),
      Translate(raw.SourceFileId(), names, learn)};
  m_last.version = names.Version();
  m_last.own = own;
  return m_last.ids;
}

void Hub::Take(const std::shared_ptr<Source>& source, SourceNames& names, Bytes record,
               const Learn& learn) {
  const RawAppTrace raw(record.data());
  const bool numbered = raw.SequenceNumber() != kNoSequenceNumber;
  const std::uint32_t number = numbered ? NextNumber() : kNoSequenceNumber;
  if (numbered) {
    ++m_taken;
    ++source->serial;
  }
  if (m_streams.empty()) return;
  names.Follow(m_names);
  const TraceIds& ids = TranslateAll(record.data(), names, learn);
  SealBefore(source);
  if (!m_builder.HasRoom(kTagBytes + record.size(), m_builder.NameBytes(ids))) Seal();
  Open();
  m_builder.Append(source, record, ids, number);
  if (m_names.IsFull() && !m_reportedFull) ReportFullNames(source);
  if (names.Share() && names.Share()->MustReport())
    m_builder.AppendLoss(source, 0,
                         "All names that an account may have are in use: further ones share one.");
  if (m_builder.IsFull()) Seal();
}

void Hub::ReportFullNames(const std::shared_ptr<Source>& source) {
  m_reportedFull = true;
  m_builder.AppendLoss(source, 0, "All 65,535 names are in use: further ones share one.");
}

void Hub::Lose(const std::shared_ptr<Source>& source, std::uint64_t lost,
               const std::string& reason) {
  source->serial += lost;
  m_lost += lost;
  if (m_streams.empty()) return;
  SealBefore(source);
  if (!m_builder.HasRoom(reason.size() + 128, 5 * (kNameRecordBytes + kLongestText))) Seal();
  Open();
  m_builder.AppendLoss(source, lost, reason);
  if (m_builder.IsFull()) Seal();
}

void Hub::CountLost(const std::shared_ptr<Source>& source, std::uint64_t lost) {
  if (lost == 0) return;
  source->serial += lost;
  m_lost += lost;
  if (m_streams.empty()) return;
  SealBefore(source);
  Open();
  m_builder.CountLost(source, lost);
  if (m_builder.IsFull()) Seal();
}

void Hub::SealForSource(const std::shared_ptr<Source>& source) {
  const bool isSameAccount = m_batches == HubBatches::OfOneAccount && m_builderSource &&
                             m_builderSource->account == source->account;
  if (!isSameAccount) Seal();
  m_builderSource = source;
}

void Hub::Seal() {
  if (!m_builder.IsEmpty()) m_sealed.push_back(m_builder.Seal());
}

void Hub::Deliver() {
  const std::vector<SharedBatch> sealed = std::exchange(m_sealed, {});
  for (const SharedBatch& batch : sealed)
    for (HubStream* const stream : m_streams) stream->OnBatch(batch);
  for (HubStream* const stream : m_streams) stream->OnDelivered();
}

void Hub::Add(HubStream& stream) {
  Seal();
  Deliver();
  m_streams.push_back(&stream);
}

bool Hub::HasOthers(const HubStream& than) const {
  return std::any_of(m_streams.begin(), m_streams.end(),
                     [&than](const HubStream* stream) { return stream != &than; });
}

void Hub::Remove(HubStream& stream) {
  std::erase(m_streams, &stream);
  if (!m_streams.empty()) return;
  Seal();
  m_sealed.clear();
  m_names.Clear();
  m_reportedFull = false;
}
