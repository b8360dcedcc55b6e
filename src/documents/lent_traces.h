// The traces of a document, lent to threads that read them.
//
// A document never waits for its readers. If it gives up its traces while they are lent, they go to
// this object and are released with the last reader. So a reader on a slow disk holds up no window.
//
// Shape    Only traces that lie in a mapped file and that nothing trims are lent.
// Owner    Shared by the readers; the document only knows of it.
// Threads  `traces` is for the readers, which never change it. Keep is for the interface thread.
#pragma once

#include <memory>
#include <utility>

#include "base/mapped_file.h"
#include "records/trace_list.h"

class LentTraces {
 public:
  LentTraces(const TraceList_t& list, std::shared_ptr<const MappedFile> file)
      : traces(list), m_file(std::move(file)) {}
  LentTraces(const LentTraces&) = delete;
  LentTraces& operator=(const LentTraces&) = delete;

  // The document gives them up.
  void Keep(TraceList_t& list) { m_kept = std::move(list); }

  const TraceList_t::Reader traces;

 private:
  const std::shared_ptr<const MappedFile> m_file;
  TraceList_t m_kept;  // before m_file goes
};
