#include "base/file_change.h"

#include "base/text.h"

std::string FileChangeText(const FileChange& change) {
  switch (change.kind) {
    case FileChange::Kind::Shorter:
      return "the file has become shorter, " + GroupDigits(change.missingBytes) +
             (change.missingBytes == 1 ? " byte is missing" : " bytes are missing");
    case FileChange::Kind::Unreadable:
      return "a part of the file can no longer be read";
    case FileChange::Kind::Written:
      return "another program has written to the file";
    default:
      return {};
  }
}
