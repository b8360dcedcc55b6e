// Imports files of Chrome's trace format into trace files.
//
// Shape    A span (X, B and E, b and e) is a trace for its begin and one for its end; an instant
//          (i, I, R, n) and a counter (C) are one each. Traces are in the order of time, as far as
//          kHeldBytes of events reach: what comes later than the others of its time does not go in
//          among what has been written. Names of processes and threads count for all of a file.
// Owner    Borrows everything but the events.
// Errors   Read is false with a reason when a write fails or the reader was stopped. Damage of the
//          input is none: what was whole is kept, and Texts tells.
// Threads  One.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "import/chrome/chrome_tracks.h"
#include "import/fields/import_field.h"
#include "import/import_parts.h"

class ChromeImport {
 public:
  static constexpr std::size_t kHeldBytes = std::size_t{256} << 20;
  // Of processes and threads that have names or events.
  static constexpr std::size_t kTracksMax = 65'536;

  ChromeImport(const ImportFields& fields, ImportParts& parts, std::size_t heldBytes = kHeldBytes)
      : m_fields(fields), m_parts(parts), m_heldMost(heldBytes) {}

  // All events of one input, of which the messages speak as `name`.
  bool Read(LineReader& reader, const std::string& name, std::string* why);
  // What is not as in the input.
  std::vector<std::string> Texts() const;
  // False: something of the input is damaged, and was left out.
  bool IsWhole() const { return m_damaged.empty() && m_strange == 0 && m_untimed == 0; }

 private:
  using Names = std::map<std::pair<std::string, std::string>, std::string>;

  bool Take(ChromeEvent& event, std::string* why);
  void TakeName(const ChromeEvent& event);
  bool Give(bool isLast, std::string* why);
  bool Put(const ChromeTrackKey& key, const ChromeStep& step, std::string* why);
  std::string ThreadOf(const ChromeTrackKey& key, std::uint32_t lane) const;
  std::uint64_t TicOf(std::int64_t ns);

  const ImportFields& m_fields;
  ImportParts& m_parts;
  std::size_t m_heldMost, m_held = 0;
  std::map<ChromeTrackKey, ChromeTrack> m_tracks;
  Names m_processes, m_threads;
  bool m_hasBase = false;
  std::int64_t m_baseNs = 0;
  std::vector<std::string> m_damaged;
  std::uint64_t m_strange = 0, m_untimed = 0, m_unnamed = 0;
  std::array<std::uint64_t, 256> m_others{};  // by phase
  bool m_hasStackFrames = false;
  std::string m_text, m_thread;
};
