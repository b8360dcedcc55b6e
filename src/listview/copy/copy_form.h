// The forms in which traces are copied, and the user's choice of them, which the settings keep.
//
// Threads  Interface thread.
#pragma once

#include <cstddef>

enum class CopyForm {
  Text,        // columns side by side, aligned by blanks
  Tabs,        // a tab between cells
  Csv,         // RFC 4180
  Json,        // an object a line, as `trc dump --format jsonl`
  FilterText,  // shows these traces again
};
inline constexpr std::size_t kCopyForms = 5;

// Of the last copy; at first Text.
CopyForm LastCopyForm();
void StoreCopyForm(CopyForm form);
// Does a line with the names of the columns come first? At first it does.
bool CopiesHeadings();
void StoreCopiesHeadings(bool on);
