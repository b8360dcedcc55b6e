#include "config/pages/sink_page.h"

#include <algorithm>

#include "base/quor_str.h"
#include "base/text.h"
#include "config/machine_browser.h"
#include "config/pages/traces_page.h"

namespace {

constexpr char kExtension[] = ".trc";
constexpr char kDefaultHistoricFiles[] = "10";
constexpr unsigned kHistoricFilesMax = 100, kSizeMin = 1, kSizeMax = 1000;
constexpr char kFlushKey[] = "flush=", kFilesKey[] = "maxfiles=", kSizeKey[] = "maxsize=";

// At the service of a whole machine a name is "alice/shop". As it stands it would be a file in a
// folder that nobody made.
std::string FileNameOf(const trace_App_i& app) {
  std::string name = app.GetAppName();
  std::replace(name.begin(), name.end(), '/', '_');
  return _UTF2MBS(name) + kExtension;
}

}  // namespace

const std::vector<std::string>& CAppSinkCfgPropertyPage::HistoricFilesChoices() {
  static const std::vector<std::string> choices = {"0",  "1",  "2",  "3",  "4",  "5",  "6",
                                                   "7",  "8",  "9",  "10", "20", "30", "40",
                                                   "50", "60", "70", "80", "90", "100"};
  return choices;
}

const std::vector<std::string>& CAppSinkCfgPropertyPage::MaxSizeChoices() {
  static const std::vector<std::string> choices = {kNoLimit, "5",   "10",  "20",  "50",
                                                   "100",    "200", "500", "1000"};
  return choices;
}

CAppSinkCfgPropertyPage::CAppSinkCfgPropertyPage(Host& host) : CPropertyPage(host, kId, "Sink") {}

void CAppSinkCfgPropertyPage::LoadFromApplication(CConfigDoc* doc, trace_App_i* app) {
  const CWaitCursor wait(GetHost());
  m_pDoc = doc;
  m_pApp = app;
  trc_SinkTypes_e type = trc_SinkSocket;
  std::string name, options;
  app->GetSink(type, name, options);
  if (type == trc_SinkFile) LoadFile(name, options);
  if (type == trc_SinkSocket) LoadServer(name);
}

void CAppSinkCfgPropertyPage::LoadFile(const std::string& name, const std::string& options) {
  m_nSinkType = kToFile;
  m_strMachine = "localhost";
  m_strFileName = name.empty() ? FileNameOf(*m_pApp) : name;
  m_bForceFlush = SinkOptionNumber(options, kFlushKey).value_or(0) != 0;
  const auto files = SinkOptionNumber(options, kFilesKey);
  m_strHistoricFiles = files ? QuorStr::NumToStr(*files) : kDefaultHistoricFiles;
  const unsigned size = SinkOptionNumber(options, kSizeKey).value_or(0);
  m_strMaxSize = size != 0 ? QuorStr::NumToStr(size) : kNoLimit;
}

void CAppSinkCfgPropertyPage::LoadServer(const std::string& name) {
  m_nSinkType = kToServer;
  m_strMachine = name;
  m_strFileName = FileNameOf(*m_pApp);
  m_bForceFlush = 0;
  m_strHistoricFiles = kDefaultHistoricFiles;
  m_strMaxSize = kNoLimit;
}

// What was typed for the other sink stays in its fields.
void CAppSinkCfgPropertyPage::ChooseSink(int sink) {
  UpdateData(true);
  m_nSinkType = sink;
  UpdateData(false);
  OnEdit();
}

void CAppSinkCfgPropertyPage::OnBrowse() {
  const auto machine = BrowseForMachine(GetHost());
  if (!machine) return;
  UpdateData(true);
  m_strMachine = *machine;
  UpdateData(false);
  SetFocus(kMachine);
  OnEdit();
}

bool CAppSinkCfgPropertyPage::OnKillActive() {
  if (!CPropertyPage::OnKillActive()) return false;
  if (m_nSinkType == kToServer) return true;
  return CheckExtension() && CheckHistoricFiles() && CheckMaxSize();
}

// A dot at the beginning of a name begins an extension, too.
bool CAppSinkCfgPropertyPage::CheckExtension() {
  const std::size_t slash = m_strFileName.rfind('/');
  const std::size_t dot = m_strFileName.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    m_strFileName += kExtension;
    UpdateData(false);
    return true;
  }
  if (CompareIgnoringCase(m_strFileName.substr(dot), kExtension) == 0) return true;
  MessageBoxRequest warning;
  warning.text =
      "Warning: File will not be recognized as a tracing file if you use a file extension other "
      "than \".trc\".  Do you want to continue?";
  warning.icon = BoxIcon::Warning;
  warning.buttons = BoxButtons::YesNo;
  warning.caption = "Warning";
  return GetHost().MessageBox(warning) == BoxAnswer::Yes;
}

bool CAppSinkCfgPropertyPage::CheckHistoricFiles() {
  const auto files = FieldNumber(m_strHistoricFiles);
  if (!files) return Refuse("Number of log files must be numeric", kHistoricFiles);
  if (*files > kHistoricFilesMax)
    return Refuse("Number of log files must be from 0 to 100", kHistoricFiles);
  return true;
}

bool CAppSinkCfgPropertyPage::CheckMaxSize() {
  if (m_strMaxSize == kNoLimit) return true;
  const auto size = FieldNumber(m_strMaxSize);
  if (!size) return Refuse("Max file size must be '<none>' or numeric", kMaxSize);
  if (*size < kSizeMin || *size > kSizeMax)
    return Refuse("Max file size must be from 1 to 1000 or '<none>'", kMaxSize);
  return true;
}

bool CAppSinkCfgPropertyPage::Refuse(const char* text, unsigned control) {
  GetHost().MessageBox({text, BoxIcon::None, BoxButtons::Ok});
  SetFocus(control);
  return false;
}

SinkPageOptions CAppSinkCfgPropertyPage::Options() const {
  SinkPageOptions options;
  options.flush = m_bForceFlush != 0;
  options.maxFiles = FieldNumber(m_strHistoricFiles).value_or(0);
  options.maxSize = FieldNumber(m_strMaxSize).value_or(0);
  return options;
}

void CAppSinkCfgPropertyPage::OnOK() {
  const CWaitCursor wait(GetHost());
  if (m_nSinkType == kToServer)
    m_pApp->SetSink(trc_SinkSocket, m_strMachine, "");
  else
    m_pApp->SetSink(trc_SinkFile, m_strFileName, SinkOptionText(Options()));
  // What was not sent stays in the handle, and goes with its next Submit.
  const bool isAway =
      m_before && m_before->Submitted() == SubmitResult::Unanswered && !m_pDoc->IsLive();
  m_submitted = isAway ? SubmitResult::Unanswered : SubmitFor(*m_pDoc, *m_pApp);
  SetModified(m_submitted != SubmitResult::Taken);  // Apply tries again
  m_pDoc->SetModifiedFlag(true);
  CPropertyPage::OnOK();
}
