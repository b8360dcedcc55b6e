// A source between two processes that send its traces.
#include "quor/otlp/out/out_ids.h"
#include "quor/otlp/out/out_source.h"

namespace {

void SaveBlock(const OpenBlock& block, quor::otlp::out::Block& to) {
  to.set_serial(block.serial);
  to.set_name(block.name);
  to.set_component(block.component);
  to.set_category(block.category);
  to.set_file(block.file);
  to.set_stack(block.stack);
  to.set_line(block.line);
  to.set_attributes(static_cast<std::uint32_t>(block.attributes));
  to.set_start(block.start);
  to.set_tic(block.tic);
  to.set_error(block.error);
  to.set_inner_end(block.innerEnd);
  to.set_machine(block.machine);
  to.set_app(block.app);
  to.set_process(block.process);
}

OpenBlock LoadBlock(const quor::otlp::out::Block& from) {
  OpenBlock block;
  block.serial = from.serial();
  block.name = from.name();
  block.component = from.component();
  block.category = from.category();
  block.file = from.file();
  block.stack = from.stack();
  block.line = from.line();
  block.attributes = static_cast<int>(from.attributes() & 0xFFFF);
  block.start = from.start();
  block.tic = from.tic();
  block.error = from.error();
  block.innerEnd = from.inner_end();
  block.machine = from.machine();
  block.app = from.app();
  block.process = from.process();
  return block;
}

}  // namespace

void OutSource::Save(quor::otlp::out::Source& to) const {
  to.set_instance(m_instance);
  to.set_has_moment(m_clock.Knows());
  to.set_moment(m_clock.Moment());
  to.set_last(m_last);
  to.set_machine(m_machine);
  to.set_app(m_app);
  to.set_process(m_process);
  for (const auto& [name, thread] : m_threads) {
    quor::otlp::out::Thread& saved = *to.add_threads();
    saved.set_name(name);
    saved.set_has_moment(thread.clock.Knows());
    saved.set_moment(thread.clock.Moment());
    saved.set_beyond(thread.beyond);
    for (const OpenBlock& block : thread.blocks) SaveBlock(block, *saved.add_blocks());
  }
}

bool OutSource::Load(const quor::otlp::out::Source& from) {
  if (from.has_moment()) m_clock = OutClock(from.moment());
  m_last = from.last();
  m_machine = from.machine();
  m_app = from.app();
  m_process = from.process();
  for (const quor::otlp::out::Thread& saved : from.threads()) {
    OpenThread& thread = m_threads[saved.name()];
    if (!thread.blocks.empty() || thread.beyond > 0) return false;
    thread.beyond = saved.beyond();
    for (const quor::otlp::out::Block& block : saved.blocks()) {
      OpenBlock loaded = LoadBlock(block);
      if (!m_totals.HasRoom(thread, loaded.Size())) return false;
      loaded.spanId = OutSpanId(m_instance, loaded.serial);
      ++m_totals.blocks;
      m_totals.bytes += loaded.Size();
      thread.blocks.push_back(std::move(loaded));
    }
    if (thread.blocks.empty()) continue;
    thread.traceId = OutTraceId(m_instance, saved.name(), thread.blocks.front().serial);
    if (saved.has_moment()) thread.clock = OutClock(saved.moment());
  }
  return true;
}
