#include "quor/otlp/feed/feed_process.h"

#include <openssl/rand.h>

#include "records/record_fields.h"

FeedProcess::FeedProcess(Hub& hub, const OtlpSource& source) : m_hub(hub) {
  Enter({});  // id 0 has no text
  m_machine = Enter(source.machine);
  m_app = Enter(source.application);
  m_pid = Enter(source.process);
  Source made;
  // One that was silent and comes again is another source, because its counts begin anew.
  RAND_bytes(made.instance.data(), static_cast<int>(made.instance.size()));
  made.machine = source.machine;
  made.app = source.application;
  made.pid = source.process;
  m_source = m_hub.AddSource(std::move(made));
}

AppNameId FeedProcess::Enter(std::string_view text) {
  const auto known = m_ids.find(text);
  if (known != m_ids.end()) return known->second;
  // The mapper keeps a process far below this.
  if (m_ids.size() == kNameIds) return AppNameId{0};
  const AppNameId id{static_cast<std::uint16_t>(m_ids.size())};
  m_ids.emplace(text, id);
  m_names.Enter(id, text);
  return id;
}

AppNameId FeedProcess::Id(Field field, std::string_view text) {
  Last& last = m_last[field];
  if (last.text == text) return last.id;
  last.id = Enter(text);
  const auto known = m_ids.find(text);
  last.text = known == m_ids.end() ? std::string_view() : std::string_view(known->first);
  return last.id;
}

void FeedProcess::Take(const OtlpRecord& record) {
  RecordFieldsOf<AppNameId> fields;
  fields.machine = m_machine;
  fields.app = m_app;
  fields.component = Id(Component, record.component);
  fields.category = Id(Category, record.category);
  fields.date = record.date;
  fields.time = record.time;
  fields.ticCount = record.tic;
  fields.pid = m_pid;
  fields.tid = Id(Thread, record.thread);
  fields.attributes = record.attributes;
  fields.sourceFile = Id(File, record.file);
  fields.sourceLine = record.line;
  fields.text = record.text;
  fields.stack = record.stack;
  MakeRecord(fields, m_record);
  m_hub.Take(m_source, m_names, m_record, {});
}
