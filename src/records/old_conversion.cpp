#include "records/old_conversion.h"

#include "records/old_translator.h"

namespace {

struct Sink {
  TrcWriter& writer;
  const std::function<bool(std::uint64_t)>& goOn;
  OldTranslator translator;
  OldConversion result;

  void OnName(OldName kind, std::uint8_t key, std::string_view text) {
    translator.Define(kind, key, text);
  }
  bool OnTrace(const OldTrace& trace, std::string_view text) {
    result.written = writer.Write(translator.Translate(trace, text), translator.Names());
    if (result.written) ++result.traces;
    return result.written;
  }
  void OnUnknownTag(std::uint64_t) { ++result.skippedBytes; }
  bool OnProgress(std::uint64_t position) {
    result.cancelled = !goOn(position);
    return !result.cancelled;
  }
};

}  // namespace

OldConversion ConvertOldTrc(Bytes old, TrcWriter& writer,
                            const std::function<bool(std::uint64_t position)>& goOn) {
  Sink sink{writer, goOn, {}, {}};
  sink.result.written = writer.WriteHeader();
  if (!sink.result.written) return sink.result;
  sink.result.position = WalkOldTrc(old, sink);
  sink.result.cutTexts = sink.translator.CutTexts();
  sink.result.lostNames = sink.translator.LostNames();
  return sink.result;
}
