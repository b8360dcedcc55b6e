#include "documents/trace_file_doc.h"

#include <exception>
#include <utility>

#include "documents/conversion_under_way.h"
#include "documents/trace_file_load.h"
#include "docview/view.h"
#include "records/trc_walk.h"

CTraceFileDoc::CTraceFileDoc(Host& host, TraceLoadSetup setup)
    : CTraceDoc(host), m_setup(std::move(setup)), m_cancelEvent(CreateEvent()) {}

CTraceFileDoc::~CTraceFileDoc() {
  CTraceFileDoc::DeleteContents();
}

bool CTraceFileDoc::OnNewDocument() {
  return CTraceDoc::OnNewDocument();
}

bool CTraceFileDoc::OnOpenDocument(const std::string& path) {
  DeleteContents();
  if (!OpenAndCheck(path)) return false;
  try {
    m_load =
        std::make_shared<TraceFileLoad>(GetHost(), m_file, path, m_cancelEvent, m_setup.search);
    // The result of a conversion comes with the traces.
    if (VersionOf(m_file->View()) == TrcVersion::Old) m_file.reset();
    m_load->m_handOver = [this] {
      TakeOver();
      for (CView* const view : Views()) view->PostMessage(WM_TRACE_UPDATE, kHintReady);
    };
    m_loadThread = BeginThread([load = m_load, hook = m_setup.beforeWalk] { load->Run(hook); });
  } catch (const std::exception& error) {  // no thread, or no memory for it
    m_openFailure = error.what();
    m_load.reset();
    m_file.reset();
    return false;
  }
  return true;
}

bool CTraceFileDoc::OpenAndCheck(const std::string& path) {
  m_openFailure.clear();
  m_file = MappedFile::Open(path, &m_openFailure);
  if (!m_file) return false;
  const TrcVersion version = VersionOf(m_file->View());
  if (version == TrcVersion::Current) return true;
  if (version == TrcVersion::Old && MayConvert()) return true;
  m_file.reset();
  if (version == TrcVersion::Old) {
    m_openFailure = "older trace file format";
    Refuse({{}, true});
  } else {
    m_openFailure = "Invalid format.";
    GetHost().MessageBox({m_openFailure, BoxIcon::Stop, BoxButtons::Ok});
  }
  return false;
}

// A question that the end of the program closes has not been answered.
bool CTraceFileDoc::MayConvert() const {
  const BoxAnswer answer =
      GetHost().MessageBox({"This trace file was created by an older version of Tessera.  "
                            "Do you want to convert it?",
                            BoxIcon::Stop, BoxButtons::YesNo});
  return answer != BoxAnswer::No && !ConversionUnderWay::AllGivenUp();
}

void CTraceFileDoc::DeleteContents() {
  StopLoad();
  CTraceDoc::DeleteContents();
}

void CTraceFileDoc::StopLoad() {
  if (!m_loadThread) return;
  m_cancelEvent->Set();
  if (m_load) m_load->StopWaiting();
  const bool ended = m_loadThread.Get()->Wait(m_setup.stopWaitMs);
  m_loadThread.Close();
  if (!m_load) return;
  if (!ended) {
    m_load->Detach();
    m_load.reset();
  } else if (m_load->Failed()) {
    m_load.reset();
  } else if (const auto handOver = std::exchange(m_load->m_handOver, nullptr)) {
    handOver();  // its posted call will find nothing to do
  }
}

void CTraceFileDoc::TakeOver() {
  const std::shared_ptr<TraceFileLoad> load = std::move(m_load);
  m_file = std::move(load->m_file);
  m_oldFile = std::move(load->m_oldFile);
  m_traces = std::move(load->m_found.traces);
  m_names = std::move(load->m_found.names);
  m_indexes = std::move(load->m_found.indexes);
  m_damage = load->m_found.damage;
  m_conversion = load->m_conversion;
  m_nameRecords = load->m_found.nameRecords;
  SetModifiedFlag(false);
  m_loading = false;
}

// A file that was cleared has no traces that its notes could be put to.
DocNotes& CTraceFileDoc::Notes() {
  if (m_file && !m_loading && !m_notes.IsOpen() && !m_traces.empty() && !GetPathName().empty())
    m_notes.Open(GetPathName(), m_file);
  return m_notes;
}
