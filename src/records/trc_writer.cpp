#include "records/trc_writer.h"

#include <errno.h>
#include <unistd.h>

#include "base/fail_with.h"
#include "records/trc_walk.h"

TrcWriter::~TrcWriter() {
  Finish();
}

bool TrcWriter::Create(const std::string& path, std::string* why, Links links) {
  Finish();
  m_file = CreateForWriting(path, why, links);
  if (!m_file) return false;
  m_stream.Attach(m_file.Descriptor(), m_blockBytes);
  m_buffer = std::make_unique<ds_BufferedOutputStream_t>(kBufferBytes);
  m_buffer->SetStream(m_stream);
  return true;
}

bool TrcWriter::WriteHeader() {
  std::size_t size = sizeof kTrcHeader;
  return m_buffer && m_buffer->WriteBuf(kTrcHeader, &size) && size == sizeof kTrcHeader;
}

bool TrcWriter::Write(const TraceEvent_i& event, NameMap& names) {
  return m_buffer && event.WriteFile(*m_buffer, names) != 0;
}

bool TrcWriter::Flush() {
  return m_buffer && m_buffer->Close();
}

bool TrcWriter::Sync() {
  if (!Flush()) return false;
  const bool onDisk = fdatasync(m_file.Descriptor()) == 0;
  return onDisk || errno == EINVAL || errno == ENOSYS;  // some file systems do not support it
}

bool TrcWriter::Finish() {
  if (!m_buffer) return false;
  m_buffer.reset();  // its destructor writes what it still holds
  const bool written = m_stream.OK();
  m_error = m_stream.Error();
  m_stream.Attach(-1);
  return m_file.Close() && written;
}

std::string TrcWriter::Why() const {
  const int error = m_file ? m_stream.Error() : m_error;
  return error == 0 ? std::string() : SystemReason(error);
}

void ClearWrittenMarks(NameMap& names) {
  for (auto& [id, entry] : names) entry.written = 0;
}
