// The messages between an application's runtime and the service of its machine, on a unix stream
// socket. They are coded by hand, because the runtime links no third-party library.
//
// Shape    Frames: length:u32 (of type and body), type:u8, body; big-endian. A text is length:u16
//          and its bytes. The hello carries the descriptor of the segment (SCM_RIGHTS). When the
//          application has lost that descriptor, the hello has only the file's device and inode.
//
//            application                service
//            Hello  ------------------>
//                   <------------------ Welcome, or Refused and the end of the connection
//                   <------------------ Rules (kept for points to come; if the segment takes them)
//                   <------------------ Sink (the configured sink), Poke (settings have changed)
//            Taker  ------------------> after each Sink: who takes the traces from now on
//            Points ------------------> points or names were added since the last message
//            Call   ------------------> a waiting taker has traces to take
//            Report ------------------> a message that the service is to trace for the application
//
//          The application does not wait at its socket, because the number of the socket may become
//          that of another file at any time. So the service signals the wake event after each
//          message.
//          The service takes traces out of the ring while the last Hello or Taker names it, until
//          it sends a Sink of type File. Before it sends that, it publishes what it took.
// Errors   A frame that is too long, of unknown type, or whose body is not exactly the message is
//          an error, and the connection must be closed. The version is the first field of a hello,
//          so that an unknown version can be refused with a reason.
// Threads  Pure; a decoder is used by one thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "quor/ring/segment.h"

constexpr std::uint32_t kLinkVersion = 2;
constexpr std::size_t kLinkFrameMax = 16384;  // type and body
constexpr std::size_t kLinkTextMax = 4096;

enum class LinkType : std::uint8_t {
  Hello = 1,
  Welcome = 2,
  Refused = 3,
  Sink = 4,
  Poke = 5,
  Taker = 6,
  Points = 7,
  Report = 8,
  Call = 9,
  Rules = 10,
};

enum class SinkKind : std::uint8_t { File = 0, Socket = 1 };

struct LinkHello {
  std::uint32_t version = kLinkVersion;
  std::uint32_t pid = 0;
  std::uint64_t startedNs = 0;
  std::uint64_t device = 0, inode = 0;  // of the segment's file
  RingTaker taker = RingTaker::Service;
  std::string app;
};
struct LinkRefused {
  std::uint32_t version = kLinkVersion;  // the version of the service
  std::string reason;
};
struct LinkSink {
  SinkKind kind = SinkKind::Socket;
  std::string name, options;
  bool operator==(const LinkSink&) const = default;
};
struct LinkReport {
  std::uint64_t lost = 0;  // how many lost traces this report counts; 0: none
  std::string text;
};

// One decoded frame. Only the member for its type is filled.
struct LinkFrame {
  LinkType type = LinkType::Poke;
  std::uint32_t version = 0;  // Welcome
  LinkHello hello;
  LinkRefused refused;
  LinkSink sink;
  RingTaker taker = RingTaker::Service;
  LinkReport report;
  std::string rules;  // quor/settings/settings_text.h
};

// Texts are cut at kLinkTextMax bytes.
std::vector<std::uint8_t> EncodeHello(const LinkHello& hello);
std::vector<std::uint8_t> EncodeWelcome();
std::vector<std::uint8_t> EncodeRefused(const std::string& reason);
std::vector<std::uint8_t> EncodeSink(const LinkSink& sink);
std::vector<std::uint8_t> EncodePoke();
std::vector<std::uint8_t> EncodeTaker(RingTaker taker);
std::vector<std::uint8_t> EncodePoints();
std::vector<std::uint8_t> EncodeCall();
std::vector<std::uint8_t> EncodeRules(const std::string& rules);
std::vector<std::uint8_t> EncodeReport(const LinkReport& report);

// Joins a stream of bytes, split anywhere, into frames. Holds at most one frame.
class LinkDecoder {
 public:
  enum class Result { Frame, More, Error };

  // Consumes bytes of [from, end) up to the end of one frame and moves `from` after them.
  Result Feed(const std::uint8_t*& from, const std::uint8_t* end, LinkFrame& frame);
  const char* Why() const { return m_why; }

 private:
  Result Fail(const char* why);

  std::vector<std::uint8_t> m_bytes;
  const char* m_why = "";
};
