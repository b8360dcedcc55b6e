// Messages of the relay, of any bytes: what is read has traces of one application, as many as it
// says, and can be written and read again. The first byte chooses; the rest is the message, or
// traces for a message that is written in full.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "quor/envelope/envelope.h"
#include "quor/envelope/envelope.pb.h"

namespace {

void CheckAgain(const Envelope& envelope) {
  if (envelope.lost > envelope.serial || envelope.delivered > envelope.serial) std::abort();
  if (envelope.traces.size() > kEnvelopeTracesBytes) std::abort();
  std::vector<std::uint8_t> message;
  Envelope again;
  // Bytes that do not pack may be too many for a message.
  if (!WriteEnvelope(envelope, message, nullptr)) return;
  if (!ReadEnvelope(message, again, nullptr)) std::abort();
  if (again.traces != envelope.traces || again.app != envelope.app) std::abort();
}

void ReadTraces(Bytes traces) {
  quor::relay::EnvelopeMessage whole;
  whole.set_format(1);
  whole.set_instance(std::string(16, 'i'));
  whole.set_machine("m");
  whole.set_app("a");
  whole.set_serial(1000);
  whole.set_unpacked(static_cast<std::uint32_t>(traces.size()));
  whole.set_traces(traces.data(), traces.size());
  for (const unsigned delivered : {0u, 1u, 2u}) {
    whole.set_delivered(delivered);
    const std::string bytes = whole.SerializeAsString();
    Envelope envelope;
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
    if (ReadEnvelope({begin, bytes.size()}, envelope, nullptr)) CheckAgain(envelope);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Bytes rest(data + 1, size - 1);
  Envelope envelope;
  MachineWord word;
  std::string machine, app;
  bool isWord = false;
  switch (data[0] % 4) {
    case 0:
      if (ReadEnvelope(rest, envelope, nullptr)) CheckAgain(envelope);
      break;
    case 1:
      ReadTraces(rest);
      break;
    case 2: {
      std::vector<std::uint8_t> message;
      if (ReadWord(rest, word, nullptr) && !WriteWord(word, message, nullptr) &&
          rest.size() * 2 < kEnvelopeBytes)
        std::abort();
      break;
    }
    default: {
      const std::string subject(rest.begin(), rest.end());
      if (ReadSubject(subject, machine, app, isWord) && subject.find("==") == subject.npos &&
          (isWord ? WordSubject(machine) : EnvelopeSubject(machine, app)) != subject)
        std::abort();
    }
  }
  return 0;
}
