// The framework's part of an application: the registered templates, File Open, recent files.
//
// Owner    The application owns its registered templates.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "docview/doc_template.h"

// The request of the command line. The first argument that is not an option is the file; unknown
// options are ignored.
struct CCommandLineInfo {
  enum Command { FileNew, FileOpen, FileNothing } command = FileNew;
  std::string file;  // absolute
};

class CWinApp : public CCmdTarget {
 public:
  static constexpr std::size_t kRecentFiles = 4;

  explicit CWinApp(Host& host);
  ~CWinApp() override;

  CMultiDocTemplate* AddDocTemplate(std::unique_ptr<CMultiDocTemplate> docTemplate);
  const std::vector<std::unique_ptr<CMultiDocTemplate>>& Templates() const { return m_templates; }

  static CCommandLineInfo ParseCommandLine(const std::vector<std::string>& arguments);
  bool ProcessShellCommand(const CCommandLineInfo& info);

  // Opens with the extension's template (the first registered one for an unknown extension). If the
  // file is already open, its window comes to the front. Success adds the path to the recent files.
  // Failure removes it, unless the file itself is good.
  virtual CDocument* OpenDocumentFile(const std::string& path);
  void OnFileOpen();
  // Asks for an existing file, beginning in the folder of the file in front. It offers the files of
  // this template, or with null those of all registered ones, then all files.
  std::optional<std::string> DoPromptFileName(const CMultiDocTemplate* docTemplate);
  void OpenRecentFile(std::size_t index);
  // Newest first. Every change calls a virtual operation, which stores the list.
  const std::vector<std::string>& RecentFiles() const { return m_recent; }
  void AddToRecentFileList(const std::string& path);
  void RemoveFromRecentFileList(const std::string& path);
  void SetRecentFiles(std::vector<std::string> paths);
  virtual void OnRecentFilesChanged() {}

  // Shows that something failed where no message box is due. A base's application shows nothing.
  virtual void ShowNotice(const std::string&) {}

  virtual bool SaveAllModified();
  virtual void CloseAllDocuments();

  CMDIFrameWnd*& MainFrame() { return m_mainFrame; }
  Host& GetHost() const { return m_host; }

 private:
  Host& m_host;
  CDocument* FindOpenDocument(const std::string& path) const;
  std::string FolderOfActive() const;
  CMDIFrameWnd* m_mainFrame = nullptr;
  std::vector<std::unique_ptr<CMultiDocTemplate>> m_templates;
  std::vector<std::string> m_recent;
};
