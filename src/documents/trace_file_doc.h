// The document of a .trc file: maps it, walks it on a thread of its own, keeps it mapped while it
// lives, because its traces are views into the mapping. A file of the older format is converted
// first, on the person's consent.
//
// Errors   OnOpenDocument false: "Invalid format." has been shown for a wrong header, nothing more
//          when the person declines the conversion, and nothing for a file that cannot be opened or
//          mapped (OpenFailure tells why, for trc).
// Threads  Interface thread. The load thread works on a TraceFileLoad of its own, shared with the
//          document; it fills containers that nobody else sees and posts them back, so that a
//          document that no longer waits for it is never touched.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/mapped_file.h"
#include "base/win32_handle.h"
#include "documents/trace_doc.h"
#include "records/trc_damage.h"

class TraceFileLoad;

// How a document loads. Tests that need a slow or a hanging load set it otherwise.
struct TraceLoadSetup {
  // How long a thread that hangs may hold up the window.
  unsigned stopWaitMs = 10000;
  // Runs on the load thread before the walk and before a conversion.
  std::function<void()> beforeWalk = {};
};

class CTraceFileDoc : public CTraceDoc {
 public:
  explicit CTraceFileDoc(Host& host, TraceLoadSetup setup = {});
  ~CTraceFileDoc() override;

  bool OnNewDocument() override;
  // Returns when the thread has been started: the traces come with hint 1002.
  bool OnOpenDocument(const std::string& path) override;
  // Signals the cancel event, waits for the load thread at most the setup's stopWaitMs, and clears.
  // A thread that has not ended by then is left to itself: what it works on is its own.
  void DeleteContents() override;

  const std::string& OpenFailure() const { return m_openFailure; }
  const HANDLE& CancelEvent() const { return m_cancelEvent; }
  // 0 while an older file is being converted, and behind a conversion that failed.
  std::uint32_t FileSize() const { return m_file ? m_file->Size() : 0; }
  // What the load met besides whole records; of a cancelled load, up to where it came.
  const TrcDamage& Damage() const { return m_damage; }
  // How many name records the file has: a name may have several.
  std::uint64_t NameRecords() const { return m_nameRecords; }
  // What other programs have done to the file since it was opened: what is shown may not be what
  // stood there. One look at the file.
  FileChange Change() const { return m_file ? m_file->Change() : FileChange(); }
  // Bytes stepped over because no record begins there.
  std::uint64_t SkippedBytes() const { return m_damage.skippedBytes; }

 private:
  bool OpenAndCheck(const std::string& path);
  bool MayConvert() const;
  void StopLoad();
  void TakeOver();

  const TraceLoadSetup m_setup;
  std::shared_ptr<const MappedFile> m_file;
  // The file that was converted. Kept: its view stays as long as the document.
  std::shared_ptr<const MappedFile> m_oldFile;
  HANDLE m_cancelEvent;
  AutoWin32Handle_t m_loadThread;
  std::shared_ptr<TraceFileLoad> m_load;  // until its traces are here
  std::string m_openFailure;
  TrcDamage m_damage;
  std::uint64_t m_nameRecords = 0;
};
