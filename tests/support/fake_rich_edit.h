// A text control without a window. Characters are the text's bytes.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "listview/source/rich_edit.h"

class FakeRichEdit final : public RichEdit {
 public:
  explicit FakeRichEdit(RichEditOwner& owner) : m_owner(owner) {}

  // The user types at the caret.
  void Type(const std::string& typed) {
    m_text.replace(Begin(), End() - Begin(), typed);
    from = to = static_cast<int>(Begin() + typed.size());
    SetModify(true);
  }

  void SetFocus() override { hasKeyboard = true; }
  void SetFormat(const RichEditFormat& wanted) override { format = wanted; }
  void SetText(const std::string& text) override {
    m_text = text;
    from = to = 0;
    modified = false;
  }
  std::string GetText() const override { return m_text; }
  void SetModify(bool now) override {
    if (modified == now) return;
    modified = now;
    m_owner.OnEditModified(now);
  }
  int LineIndex(int line) const override {
    if (line == -1) {
      const std::size_t end = m_text.rfind('\n', static_cast<std::size_t>(std::max(to - 1, 0)));
      return to == 0 || end == m_text.npos ? 0 : static_cast<int>(end) + 1;
    }
    std::size_t index = 0;
    for (; line > 0; --line) {
      const std::size_t end = m_text.find('\n', index);
      if (end == m_text.npos) return -1;
      index = end + 1;
    }
    return static_cast<int>(index);
  }
  void SetSel(int first, int last) override {
    calls.push_back("select " + std::to_string(first) + " " + std::to_string(last));
    if (first == -1) {
      from = to;
    } else {
      from = first;
      to = last;
    }
  }
  void MarkLine(int line) override { markedLine = line; }
  bool HasSelection() const override { return from != to; }
  std::string GetSelText() const override { return m_text.substr(Begin(), End() - Begin()); }
  void Copy() override { copied = GetSelText(); }
  bool FindText(const RichEditFind& find) override {
    calls.push_back("find " + find.text + (find.matchCase ? " case" : "") +
                    (find.wholeWord ? " word" : ""));
    std::size_t hit = m_text.find(find.text, End());
    if (hit == m_text.npos) hit = m_text.find(find.text);
    if (hit == m_text.npos) return false;
    from = static_cast<int>(hit);
    to = from + static_cast<int>(find.text.size());
    return true;
  }

  RichEditFormat format;
  bool modified = false;
  bool hasKeyboard = false;
  int from = 0, to = 0;  // the selection; the caret is `to`
  int markedLine = -1;   // the last requested one
  std::string copied;
  std::vector<std::string> calls;

 private:
  std::size_t Begin() const { return static_cast<std::size_t>(std::min(from, to)); }
  std::size_t End() const { return static_cast<std::size_t>(std::max(from, to)); }
  RichEditOwner& m_owner;
  std::string m_text;
};
