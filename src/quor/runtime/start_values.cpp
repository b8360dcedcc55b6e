#include "quor/runtime/start_values.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "quor/ring/cut_length.h"
#include "quor/settings/written_sink.h"

namespace {

constexpr const char* kSettingsName = "QUOR_SETTINGS";
constexpr const char* kSinkName = "QUOR_SINK";
constexpr std::size_t kNoteMax = 1024;  // of what was given; the faults follow

std::string NoteLine(const std::string& text) {
  std::string line = text.substr(0, CutLength(text.data(), text.size(), kNoteMax));
  if (line.size() < text.size()) line += "...";
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

}  // namespace

void StartValues::Read() {
  *this = StartValues();
  if (const char* const text = secure_getenv(kSettingsName); text && *text) ReadSettings(text);
  if (const char* const text = secure_getenv(kSinkName); text && *text) ReadSink(text);
}

void StartValues::ReadSettings(const char* text) {
  m_given.push_back(std::string(kSettingsName) + "=" + text);
  std::vector<std::string> faults;
  m_settings = SettingsText::Read(text, &faults);
  for (const std::string& fault : faults)
    m_faults.push_back(std::string(kSettingsName) + ": " + fault);
}

void StartValues::ReadSink(const char* text) {
  m_given.push_back(std::string(kSinkName) + "=" + text);
  std::string why;
  if (std::optional<WrittenSink> sink = WrittenSink::Read(text, &why)) {
    m_sink = LinkSink{sink->file ? SinkKind::File : SinkKind::Socket, std::move(sink->name),
                      std::move(sink->options)};
    m_sinkText = text;
  } else {
    m_faults.push_back(std::string(kSinkName) + ": " + why);
  }
}

std::string StartValues::Notes() const {
  std::string notes;
  for (const auto* const lines : {&m_given, &m_faults})
    for (const std::string& line : *lines)
      notes.append(notes.empty() ? "" : "\n").append(NoteLine(line));
  return notes;
}
