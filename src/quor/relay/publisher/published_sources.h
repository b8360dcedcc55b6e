// The sources of a machine's stream: what their messages are named by, and how far they have come.
//
// Shape    A source is known from its first trace until it is forgotten. Words say where sources
//          stand: those that changed, and now and then all of them.
// Errors   A source that nobody has named has no entry in names.
// Threads  One.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "quor/envelope/envelope.h"

struct SourceNaming {
  std::string machine, app;
  std::uint32_t pid = 0;
};

class PublishedSources {
 public:
  // What an envelope says. An envelope without a name leaves an earlier one as it is.
  void Learn(const Envelope& envelope, bool isNamed);
  // It has ended: the next words say so, and it is gone.
  void Forget(const std::string& instance);
  // Null: unknown.
  const SourceNaming* Find(const std::string& instance) const;
  // The words about those that have changed since the last call; `all`: about every one.
  // `machine`: of sources without a name.
  std::vector<MachineWord> Words(bool all, const std::string& machine);
  bool HasChanged() const { return m_changed; }

  // For a file: one line of text for each source, without its end.
  std::vector<std::string> Lines() const;
  // False: the line is none.
  bool Restore(const std::string& line);

 private:
  struct Known {
    SourceNaming naming;
    bool isNamed = false, hasEnded = false, hasChanged = true;
    std::uint64_t serial = 0;
  };
  std::map<std::string, Known> m_sources;
  bool m_changed = false;
};
