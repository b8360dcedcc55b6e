// The document of a .trc file. It maps the file, walks it on a separate thread, and keeps it mapped
// as long as the document lives, because its traces refer to the mapping. A file of the older
// format is converted first, if the user agrees.
//
// Errors   OnOpenDocument false: "Invalid format." has been shown for a wrong header; no message if
//          the user declines the conversion, or if the file cannot be opened or mapped (OpenFailure
//          has the reason, for trc).
// Threads  Interface thread. The load thread works on a TraceFileLoad of its own, shared with the
//          document. It fills containers that nobody else sees and posts them to the document. So a
//          document that no longer waits for it is never touched.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/mapped_file.h"
#include "base/win32_handle.h"
#include "documents/trace_doc.h"
#include "records/old_conversion.h"

class LoadSearch;
class TraceFileLoad;

// Parameters of a load. Tests that need a slow or a hanging load change the first two.
struct TraceLoadSetup {
  // How long a thread that hangs may hold up the window.
  unsigned stopWaitMs = 10000;
  // Runs on the load thread before the walk and before a conversion.
  std::function<void()> beforeWalk = {};
  // Of the next load; null: none.
  std::shared_ptr<LoadSearch> search = nullptr;
};

class CTraceFileDoc : public CTraceDoc {
 public:
  explicit CTraceFileDoc(Host& host, TraceLoadSetup setup = {});
  ~CTraceFileDoc() override;

  bool OnNewDocument() override;
  // Returns when the thread has been started; the traces come with hint 1002.
  bool OnOpenDocument(const std::string& path) override;
  // Signals the cancel event, waits for the load thread at most the setup's stopWaitMs, and clears.
  // A thread that has not ended by then goes on alone: it works on objects of its own.
  void DeleteContents() override;

  // Those beside the file, read when they are first asked for. None while it is being loaded.
  DocNotes& Notes() override;

  const std::string& OpenFailure() const { return m_openFailure; }
  const HANDLE& CancelEvent() const { return m_cancelEvent; }
  // 0 while an older file is being converted, and after a conversion that failed.
  std::uint32_t FileSize() const { return m_file ? m_file->Size() : 0; }
  // The mapped file, with the guard behind it. Empty: as for FileSize.
  Bytes FileBytes() const { return m_file ? m_file->View() : Bytes(); }
  // The damage that the load met; for a cancelled load, up to the position that it reached.
  const TrcDamage& Damage() const { return m_damage; }
  // What the file lost when it was converted, at this opening.
  const OldConversion& Conversion() const { return m_conversion; }
  // How many name records the file has: a name may have several.
  std::uint64_t NameRecords() const { return m_nameRecords; }
  // How other programs have changed the file since it was opened: then the rows may show another
  // content than the original. Looks at the file once.
  FileChange Change() const { return m_file ? m_file->Change() : FileChange(); }

 private:
  bool OpenAndCheck(const std::string& path);
  bool MayConvert() const;
  void StopLoad();
  void TakeOver();
  std::shared_ptr<const MappedFile> FileOfTraces() const override {
    return m_load ? nullptr : m_file;
  }

  const TraceLoadSetup m_setup;
  std::shared_ptr<const MappedFile> m_file;
  // The file that was converted. Kept: it stays mapped as long as the document lives.
  std::shared_ptr<const MappedFile> m_oldFile;
  HANDLE m_cancelEvent;
  AutoWin32Handle_t m_loadThread;
  std::shared_ptr<TraceFileLoad> m_load;  // until its traces have arrived
  std::string m_openFailure;
  TrcDamage m_damage;
  OldConversion m_conversion;
  std::uint64_t m_nameRecords = 0;
};
