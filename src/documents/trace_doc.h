// The common base of the trace documents. It owns the traces of one source, their names, and the
// ids that a filter offers. It notifies its views of changes.
//
// Owner    The document owns its traces; views and hints borrow them.
// Errors   The save shows its own messages and returns false; it leaves the document as it was.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <string>

#include "documents/lent_traces.h"
#include "documents/trace_hint.h"
#include "documents/trace_indexes.h"
#include "docview/document.h"
#include "notes/kept/doc_notes.h"
#include "records/name_map.h"
#include "records/trace_list.h"
#include "where/where_marks.h"

class CTraceDoc : public CDocument {
 public:
  explicit CTraceDoc(Host& host);
  ~CTraceDoc() override;

  // Takes ownership of the trace and notes its ids; the document is modified. Notifies no view: the
  // caller does that once for a batch.
  void AddTrace(TraceEvent_i* event);

  bool OnNewDocument() override;
  // Releases all traces, then sends the views 1002 and 1003. Names, process map and id lists stay,
  // because a live connection goes on using them, and later traces have old ids.
  void DeleteContents() override;
  // Writes all traces, oldest first, whatever a view's filter shows. The modified flag stays.
  bool OnSaveDocument(const std::string& path) override;
  // True without a question after a Quick Close. Also asks about notes that cannot be saved.
  bool SaveModified() override;
  // Asks for a name and writes a copy; the document keeps its name and its modified flag.
  bool DoFileSave() override;

  // May the traces be written to a file? False after a message: they have not been loaded (yet),
  // and an empty file could replace a good one.
  bool MayBeWritten() const;

  // The traces that the document holds, for threads that read them. Null if they may change while
  // the document holds them.
  std::shared_ptr<const LentTraces> Lend();

  // The marks and notes of the traces as they are now, for filter texts. Null: there are none, or
  // `why` has the reason.
  std::shared_ptr<const WhereMarks> Marks(std::string* why) { return Notes().ForFilters(why); }
  // The marks and notes of the traces. Views get 1007 after a change.
  virtual DocNotes& Notes() { return m_notes; }

  // Do traces arrive without a command of the user?
  virtual bool IsStream() const { return false; }
  // The text of a view without traces: what it waits for, and in a second line why.
  virtual std::string WhyEmpty() const { return "No traces"; }

  // Read directly by views, iterators and the filter.
  bool m_loading = true;  // views wait for hint 1002 while it is set
  TraceList_t m_traces;
  NameMap m_names;
  bool m_synchronize = false;  // the views follow one another's current trace
  TraceIndexes m_indexes;

 protected:
  DocNotes m_notes{GetHost(), m_traces, [this] { UpdateAllViews(nullptr, kHintMarked); }};

 private:
  // What the traces lie in; null: traces come and go.
  virtual std::shared_ptr<const MappedFile> FileOfTraces() const { return nullptr; }

  std::weak_ptr<LentTraces> m_lent;
};
