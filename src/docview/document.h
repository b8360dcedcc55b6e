// A document: the content of a window, its name, its changes.
//
// Owner    A document belongs to its template (docview/doc_template.h) or, without one, to its
//          maker. It borrows its views; each view adds and removes itself.
// Errors   Operations return bool; the message is shown where the failure happened. No exception
//          leaves a document.
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

#include "docview/commands/command.h"
#include "docview/host.h"

class CFrameWnd;
class CMultiDocTemplate;
class CView;

// What is known, besides the message that a failed OnOpenDocument has shown.
struct OpenRefusal {
  std::string why = {};     // for a line of text; empty: nothing
  bool fileIsGood = false;  // the user has cancelled, or what the file needs is missing
};

class CDocument : public CCmdTarget {
 public:
  explicit CDocument(Host& host) : m_host(host) {}
  ~CDocument() override;

  // DeleteContents, no path, not modified.
  virtual bool OnNewDocument();
  // A base's document has no file format: both fail.
  virtual bool OnOpenDocument(const std::string& path);
  virtual bool OnSaveDocument(const std::string& path);
  const OpenRefusal& LastRefusal() const { return m_refusal; }
  // Removes the contents. A base's version does nothing.
  virtual void DeleteContents() {}
  // May the document be closed? Asks "Save changes to ...?" when it is modified; Yes saves.
  virtual bool SaveModified();
  // Closes the frames of all views without asking, calls DeleteContents and removes the document
  // from its template, which destroys it.
  virtual void OnCloseDocument();

  // Saves to *path, or asks for a name when `path` is null ("Save As", or "Save Copy As" without
  // `replace`). With `replace` the file becomes the document's file. A file that could not be
  // completely written stays as it is: nothing is deleted.
  bool DoSave(const std::string* path, bool replace);

  // Calls OnUpdate of every view except the sender, directly. The object is borrowed for the call.
  void UpdateAllViews(CView* sender, unsigned hint = 0, CObject* object = nullptr);
  void AddView(CView* view);
  void RemoveView(CView* view);
  const std::vector<CView*>& Views() const { return m_views; }
  // The frames of the views, each once, in the order in which their first views came.
  std::vector<CFrameWnd*> Frames() const;
  // Call it after a frame was added or removed, or the title changed.
  void UpdateFrameTitles();

  void SetTitle(const std::string& title);
  const std::string& GetTitle() const { return m_title; }
  // Also sets the title: a path's last part, or all of a text that is not an absolute path.
  virtual void SetPathName(const std::string& path, bool addToRecent);
  const std::string& GetPathName() const { return m_path; }
  // Do its windows' titles end in "*" while it is modified?
  virtual bool ShowsEdits() const { return false; }
  virtual void SetModifiedFlag(bool modified) { m_modified = modified; }
  virtual bool IsModified() const { return m_modified; }

  // Does long work read the document (docview/dialogs/long_work.h)? Then nothing may change it: a
  // monitor leaves its traces in their queue. Several works may nest.
  bool IsBusy() const { return m_works > 0; }
  void BeginWork() { ++m_works; }
  void EndWork() { --m_works; }

  CMultiDocTemplate* GetDocTemplate() const { return m_template; }
  Host& GetHost() const { return m_host; }

 protected:
  // The save that SaveModified offers: in place if there is a file that can be written, else after
  // asking for a name.
  virtual bool DoFileSave();
  // For an OnOpenDocument that fails; gives its result.
  bool Refuse(OpenRefusal refusal);

 private:
  friend class CMultiDocTemplate;
  Host& m_host;
  CMultiDocTemplate* m_template = nullptr;
  std::vector<CView*> m_views;
  std::string m_title, m_path;
  OpenRefusal m_refusal;
  int m_works = 0;
  bool m_modified = false;
  bool m_closing = false;  // OnCloseDocument has begun
};
