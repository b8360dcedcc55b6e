// The settings and the sink that the environment gives this process for its start.
//
// Shape    QUOR_SETTINGS (quor/settings/settings_text.h) and QUOR_SINK (written_sink.h). They are
//          in force from the first trace on, with and without a service, until somebody sets
//          something else. A program that runs with another user's rights (set-uid) ignores them.
// Errors   What cannot be read is told by a trace of component "Quor", category "Settings", and in
//          the notes that the service shows. The library never writes to the program's streams.
// Threads  Read once, before the first segment. Then constant.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quor/link/link.h"
#include "quor/settings/settings_text.h"

class StartValues {
 public:
  static constexpr const char* kCategory = "Settings";

  void Read();  // once more after a start that has failed
  const SettingsText& Settings() const { return m_settings; }
  const std::optional<LinkSink>& Sink() const { return m_sink; }
  // Both variables as they were read; empty: the process was started without any.
  const std::vector<std::string>& Given() const { return m_given; }
  const std::string& SinkGiven() const { return m_sinkText; }
  const std::vector<std::string>& Faults() const { return m_faults; }
  // Given and Faults as lines, for the segment.
  std::string Notes() const;

 private:
  void ReadSettings(const char* text);
  void ReadSink(const char* text);

  SettingsText m_settings;
  std::optional<LinkSink> m_sink;
  std::string m_sinkText;
  std::vector<std::string> m_given, m_faults;
};
