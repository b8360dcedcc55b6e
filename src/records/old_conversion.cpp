#include "records/old_conversion.h"

#include "base/text.h"
#include "records/old_translator.h"

namespace {

struct Sink {
  TrcWriter& writer;
  const std::function<bool(std::uint64_t)>& goOn;
  OldTranslator translator;
  OldConversion result;
  NameMap noNames;
  std::vector<bool> inFile = std::vector<bool>(kNameIds);  // by id: the name has been written

  void OnName(OldName kind, std::uint8_t key, std::string_view text) {
    translator.Define(kind, key, text);
  }
  bool OnTrace(const OldTrace& trace, std::string_view text) {
    const _TraceEvent_t made = translator.Translate(trace, text);
    // Looking up seven names costs more than all the rest: done only for the first use of each.
    NameMap& names = NeedsNames(RawTrace(made.Record())) ? translator.Names() : noNames;
    result.written = writer.Write(made, names);
    if (result.written) ++result.traces;
    return result.written;
  }
  bool NeedsNames(const RawTrace& trace) {
    bool needed = false;
    for (const NameId id : trace.Ids().All()) {
      needed = needed || !inFile[id];
      inFile[id] = true;
    }
    return needed;
  }
  void OnUnknownTag(std::uint64_t position) { result.damage.Skip(position); }
  void OnCutRecord(std::uint64_t position) { result.damage.cutAt = position; }
  bool OnProgress(std::uint64_t position) {
    result.cancelled = !goOn(position);
    return !result.cancelled;
  }
};

}  // namespace

OldConversion ConvertOldTrc(Bytes old, TrcWriter& writer,
                            const std::function<bool(std::uint64_t position)>& goOn) {
  Sink sink{writer, goOn, {}, {}, {}};
  sink.result.written = writer.WriteHeader();
  if (!sink.result.written) return sink.result;
  sink.result.position = WalkOldTrc(old, sink);
  sink.result.cutNames = sink.translator.CutNames();
  sink.result.cutTexts = sink.translator.CutTexts();
  sink.result.lostNames = sink.translator.LostNames();
  return sink.result;
}

std::vector<std::string> LossTexts(const OldConversion& conversion, bool places) {
  std::vector<std::string> texts;
  if (conversion.damage.Any()) texts.push_back("damaged: " + DamageText(conversion.damage, places));
  const auto tell = [&texts](std::uint64_t number, const char* one, const char* many) {
    if (number != 0) texts.push_back(GroupDigits(number) + " " + (number == 1 ? one : many));
  };
  tell(conversion.cutTexts, "text was cut: a trace file holds 65535 bytes of each",
       "texts were cut: a trace file holds 65535 bytes of each");
  tell(conversion.cutNames, "name was cut: a trace file holds 65535 bytes of each",
       "names were cut: a trace file holds 65535 bytes of each");
  tell(conversion.lostNames, "name was left out: a trace file holds 65536",
       "names were left out: a trace file holds 65536");
  return texts;
}
