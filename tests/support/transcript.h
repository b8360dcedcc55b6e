// The recorded events, line by line. Threads: any.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

class TranscriptKeeper {
 public:
  // The lines so far.
  std::vector<std::string> Transcript() const {
    const std::lock_guard lock(m_mutex);
    return m_transcript;
  }
  std::string Reported() const {  // all lines, each with its "\n"
    std::string all;
    for (const std::string& line : Transcript()) all += line + "\n";
    return all;
  }
  void ClearTranscript() {
    const std::lock_guard lock(m_mutex);
    m_transcript.clear();
  }
  // A test adds lines of its own to check the order of both.
  void Note(std::string line) {
    const std::lock_guard lock(m_mutex);
    m_transcript.push_back(std::move(line));
  }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_transcript;
};
