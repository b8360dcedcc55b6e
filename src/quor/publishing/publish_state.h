// What a publisher of a machine's traces must know when it is started again, in a file.
//
// Shape    A text: which stream of the service it takes, how much of it is published, and where the
//          sources stand. The file is replaced as a whole.
// Owner    Holds a lock beside the file until its end, so that only one process publishes by it.
// Errors   False and a reason. A file that cannot be read is none: another stream begins.
// Threads  One.
#pragma once

#include <string>
#include <vector>

#include "quor/relay/publisher/publisher.h"

struct PublishState {
  std::string engineStream;  // it is good for this one only
  Publisher::Kept kept;      // no stream: nothing has been published
  std::vector<std::string> sources;
};

class PublishStateFile {
 public:
  PublishStateFile() = default;
  ~PublishStateFile();
  PublishStateFile(const PublishStateFile&) = delete;
  PublishStateFile& operator=(const PublishStateFile&) = delete;

  // Makes its folder. `damage`: why an existing file is not used.
  bool Open(const std::string& path, PublishState* state, std::string* damage, std::string* why);
  bool Save(const PublishState& state, std::string* why) const;

 private:
  std::string m_path;
  int m_lock = -1;
};
