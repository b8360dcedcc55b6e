// The messages between the service and its keeper, on a unix socket that keeps them apart.
//
// Shape    Native numbers: both are the same program. A Keep travels with three descriptors: the
//          segment, the event and the process (a pidfd).
// Errors   Receive: false for the end, a time limit of the socket, or a message that is none.
// Threads  Any.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

// A descriptor that closes itself.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor&& other) noexcept : m_number(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      Close();
      m_number = other.Release();
    }
    return *this;
  }
  int Get() const { return m_number; }
  int Release() { return std::exchange(m_number, -1); }
  void Close();

 private:
  int m_number = -1;
};

// One application as the keeper holds it.
struct KeptApp {
  std::uint64_t id = 0;  // of the service's choice
  std::uint32_t pid = 0;
  std::string app;
  Descriptor segment, event, process;
};

enum class KeeperWord : std::uint32_t {
  Keep = 1,    // both ways: hold this; this is held
  Forget = 2,  // to the keeper, by id
  End = 3,     // to the service: that was all
};

bool SendKeep(int socket, const KeptApp& app);
bool SendKeeperWord(int socket, KeeperWord word, std::uint64_t id = 0);
// Fills `app` with what came; of a Forget the id alone.
bool ReceiveKeeperWord(int socket, KeeperWord* word, KeptApp* app);
