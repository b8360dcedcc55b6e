// The messages between an application's runtime and the service of its machine, on a unix stream
// socket. Coded by hand, because the runtime links no third-party library.
//
// Shape    Frames: length:u32 (of type and body), type:u8, body; big-endian; a text is length:u16
//          and its bytes. The hello travels with the descriptor of the segment (SCM_RIGHTS), or
//          with none when the application has lost it: it tells which file it was.
//
//            application                service
//            Hello  ------------------>
//                   <------------------ Welcome, or Refused and the end
//                   <------------------ Sink (what is configured), Poke (settings were written)
//            Taker  ------------------> after each Sink: who takes the traces from now on
//            Points ------------------> points or names were entered since the last word
//            Call   ------------------> there are traces for a taker that waits
//            Report ------------------> something that the application wants traced for it
//
//          The application does not wait at its socket, whose number may be another file's at any
//          time: after a word the service rings the segment's bell.
//          The service takes traces out of the ring while the last Hello or Taker says so and until
//          it sends a Sink of type File; before that it publishes what it took.
// Errors   A frame that is too long, of unknown type, or whose body is not exactly the message is
//          an error, and the connection is to be ended. The version is read before anything else
//          of a hello, so that an unknown one can be refused in words.
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
  std::uint32_t version = kLinkVersion;  // that the service speaks
  std::string reason;
};
struct LinkSink {
  SinkKind kind = SinkKind::Socket;
  std::string name, options;
};
struct LinkReport {
  std::uint64_t lost = 0;  // traces that this report stands for; 0: none were lost
  std::string text;
};

// One frame taken apart; the member of its type is filled.
struct LinkFrame {
  LinkType type = LinkType::Poke;
  std::uint32_t version = 0;  // Welcome
  LinkHello hello;
  LinkRefused refused;
  LinkSink sink;
  RingTaker taker = RingTaker::Service;
  LinkReport report;
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
std::vector<std::uint8_t> EncodeReport(const LinkReport& report);

// Puts a stream of bytes, split anywhere, together to frames. Holds at most one frame.
class LinkDecoder {
 public:
  enum class Result { Frame, More, Error };

  // Takes bytes of [from, end) up to the end of one frame and moves `from` behind them.
  Result Feed(const std::uint8_t*& from, const std::uint8_t* end, LinkFrame& frame);
  const char* Why() const { return m_why; }

 private:
  Result Fail(const char* why);

  std::vector<std::uint8_t> m_bytes;
  const char* m_why = "";
};
