// A document: what a window shows, its name, its changes.
//
// Owner    A document belongs to its template (docview/doc_template.h) or, without one, to whoever
//          made it. It borrows its views; each view enters and leaves the list by itself.
// Errors   Operations report by bool; the words are shown where the failure happened. No exception
//          leaves a document.
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

#include "docview/command.h"
#include "docview/host.h"

class CMultiDocTemplate;
class CView;

class CDocument : public CCmdTarget {
 public:
  explicit CDocument(Host& host) : m_host(host) {}
  ~CDocument() override;

  // DeleteContents, no path, not modified.
  virtual bool OnNewDocument();
  virtual bool OnOpenDocument(const std::string& path);
  virtual bool OnSaveDocument(const std::string& path);
  // Forgets the contents. A base's version does nothing.
  virtual void DeleteContents() {}
  // May the document go? Asks "Save changes to ...?" when it is modified; Yes saves.
  virtual bool SaveModified();
  // Closes the frames of all views without asking, runs DeleteContents and takes the document off
  // its template, which destroys it.
  virtual void OnCloseDocument();

  // Saves to *path, or asks for a name when `path` is null ("Save As", or "Save Copy As" without
  // `replace`). With `replace` the file becomes the document's file. A file that could not be
  // written whole stays as it is: nothing is deleted.
  bool DoSave(const std::string* path, bool replace);

  // Tells every view but the sender, by a direct call each. The object is borrowed for the call.
  void UpdateAllViews(CView* sender, unsigned hint = 0, CObject* object = nullptr);
  void AddView(CView* view);
  void RemoveView(CView* view);
  const std::vector<CView*>& Views() const { return m_views; }

  void SetTitle(const std::string& title);
  const std::string& GetTitle() const { return m_title; }
  // Also makes the title of the path's last part.
  void SetPathName(const std::string& path, bool addToRecent);
  const std::string& GetPathName() const { return m_path; }
  void SetModifiedFlag(bool modified) { m_modified = modified; }
  bool IsModified() const { return m_modified; }

  CMultiDocTemplate* GetDocTemplate() const { return m_template; }
  Host& GetHost() const { return m_host; }

 private:
  friend class CMultiDocTemplate;
  Host& m_host;
  CMultiDocTemplate* m_template = nullptr;
  std::vector<CView*> m_views;
  std::string m_title, m_path;
  bool m_modified = false;
};
