#include "listview/export/export_file.h"

bool ExportFile::Open(const std::string& path, std::string* why) {
  Close();
  m_file = CreateForWriting(path, why);
  if (!m_file) return false;
  m_stream.Attach(m_file.Descriptor());
  return true;
}

bool ExportFile::Flush() {
  m_stream.Write(m_buffer.data(), m_buffer.size());
  m_buffer.clear();
  return m_stream.OK();
}

bool ExportFile::Close() {
  const bool written = m_buffer.empty() ? m_stream.OK() : Flush();
  if (m_stream.Error() != 0) m_error = m_stream.Error();
  m_stream.Attach(-1);
  return m_file.Close() && written;
}
