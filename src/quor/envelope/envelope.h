// One message of the relay: some traces of one source, which can be read without any other message.
//
// Shape    A protobuf Envelope: see envelope.proto. Its traces are a whole little .trc file, with
//          every name that its records use, compressed with zstd. A name comes once, before what
//          uses it. Records with a number are those that were delivered; one without a number
//          reports a loss and is not counted.
// Errors   False and a reason. A message is bad as a whole: nothing of it is given out.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"

// An engine takes 1 MiB with its own headers.
constexpr std::size_t kEnvelopeBytes = 900 * 1024;
// Unpacked: more is refused before memory is taken for it.
constexpr std::size_t kEnvelopeTracesBytes = 4 * 1024 * 1024;

struct Envelope {
  std::string instance;      // of the source, 16 bytes
  std::string machine, app;  // UTF-8, as in its traces
  std::uint32_t pid = 0;
  // It covers the traces (serial - delivered - lost, serial] of the source.
  std::uint64_t serial = 0, delivered = 0, lost = 0;
  std::vector<std::uint8_t> traces;  // unpacked, of this machine and application; may be empty
};

// A word without traces: how far the sources of a machine have come.
struct SourceWord {
  std::string instance, app;
  std::uint64_t serial = 0;
  bool ended = false;
};
struct MachineWord {
  std::string machine;
  std::vector<SourceWord> sources;
};

bool WriteEnvelope(const Envelope& envelope, std::vector<std::uint8_t>& message, std::string* why);
bool ReadEnvelope(Bytes message, Envelope& envelope, std::string* why);
bool WriteWord(const MachineWord& word, std::vector<std::uint8_t>& message, std::string* why);
bool ReadWord(Bytes message, MachineWord& word, std::string* why);

// "quor1.<machine>.<app>". Bytes of a name outside [A-Za-z0-9_-] become =XX. An empty name is "=".
// A long name is cut, and "==" with a hash of it follows. So compare a subject with that of the
// envelope: what ReadSubject gives of a long name is its beginning.
std::string EnvelopeSubject(const std::string& machine, const std::string& app);
// "quor1.<machine>._": no application can have this subject, as "_" of a name becomes "=5F" when it
// is all of the name.
std::string WordSubject(const std::string& machine);
// A name as it stands in a subject, for filters.
std::string SubjectToken(const std::string& name);
// "_INBOX_<user>": begins the subjects at which this user of an engine waits for answers, which no
// other user may hear. No e-mail address gives that of another one, or a wildcard.
std::string UserInbox(const std::string& email);
// False: it is neither. `app` is empty for a word.
bool ReadSubject(const std::string& subject, std::string& machine, std::string& app, bool& word);
