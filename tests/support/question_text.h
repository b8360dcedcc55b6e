// The text of a question in a transcript, and the answer when it is closed without one.
#pragma once

#include <optional>
#include <string>

#include "docview/host.h"

// The answer when a user closes a box without deciding: Cancel, No, or the only button.
inline BoxAnswer ClosedBox(BoxButtons buttons) {
  if (buttons == BoxButtons::Ok) return BoxAnswer::Ok;
  return buttons == BoxButtons::YesNo ? BoxAnswer::No : BoxAnswer::Cancel;
}

inline std::string AnswerText(BoxAnswer answer) {
  static constexpr const char* kNames[] = {"OK", "Cancel", "Yes", "No"};
  return kNames[static_cast<int>(answer)];
}

// Tessera [stop] "Invalid format." (OK)
inline std::string BoxText(const MessageBoxRequest& request) {
  static constexpr const char* kIcons[] = {"none", "stop", "question", "warning", "information"};
  static constexpr const char* kButtons[] = {"OK", "OK, Cancel", "Yes, No", "Yes, No, Cancel"};
  return request.caption + " [" + kIcons[static_cast<int>(request.icon)] + "] \"" + request.text +
         "\" (" + kButtons[static_cast<int>(request.buttons)] + ")";
}

// save dialog "Save As" ext=.trc name="" filters="Trace Files (*.trc)|*.trc" -> none
inline std::string FileDialogText(const FileDialogRequest& request,
                                  const std::optional<FileDialogAnswer>& answer) {
  std::string line = (request.save ? "save dialog \"" : "open dialog \"") + request.title +
                     "\" ext=" + request.defaultExtension + " name=\"" + request.suggestedName +
                     "\" filters=\"";
  for (const FileFilter& filter : request.filters) {
    if (line.back() != '"') line += '|';
    line += filter.label + "|" + filter.patterns;
  }
  return line + "\" -> " + (answer ? answer->path : "none");
}
