// Random traces against a slow model, which finds the partner of each trace by looking through all
// of them, and against a second sender that goes on where the first one was killed.
#include <gmock/gmock.h>

#include <map>
#include <random>
#include <set>

#include "quor/otlp/out/out_ids.h"
#include "sent_messages.h"

namespace {

struct Played {
  OutTrace trace;
  std::string text, thread;
  char kind = 'l';  // b(egin), e(nd), l(og), x: lost, r: reported loss
  std::uint64_t serial = 0, lost = 0, ns = 0;
};
using Plan = std::vector<Played>;

constexpr std::size_t kNone = ~std::size_t{0};

class Model {
 public:
  explicit Model(const Plan& plan) : m_plan(plan) {}
  // The End of the Begin at `at`.
  std::size_t EndOf(std::size_t at) const {
    for (std::size_t i = at + 1, depth = 0; i < m_plan.size(); ++i) {
      if (m_plan[i].kind == 'x' || m_plan[i].kind == 'r') return kNone;
      if (m_plan[i].thread != m_plan[at].thread) continue;
      if (m_plan[i].kind == 'b') ++depth;
      if (m_plan[i].kind == 'e' && depth-- == 0) return i;
    }
    return kNone;
  }
  // The Begin of the innermost block around `at`. For an End: the one that it closes.
  std::size_t Around(std::size_t at) const {
    for (std::size_t i = at, depth = 0; i-- > 0;) {
      if (m_plan[i].kind == 'x' || m_plan[i].kind == 'r') return kNone;
      if (m_plan[i].thread != m_plan[at].thread) continue;
      if (m_plan[i].kind == 'e') ++depth;
      if (m_plan[i].kind != 'b') continue;
      if (depth == 0) return i;
      --depth;
    }
    return kNone;
  }
  std::size_t Outermost(std::size_t at) const {
    while (Around(at) != kNone) at = Around(at);
    return at;
  }
  bool HasError(std::size_t begin) const {
    const std::size_t end = EndOf(begin);
    for (std::size_t i = begin; i < m_plan.size() && i <= end; ++i) {
      if (m_plan[i].kind == 'x' || m_plan[i].kind == 'r') break;
      if (m_plan[i].thread != m_plan[begin].thread) continue;
      const bool direct = i == begin || i == end || (m_plan[i].kind == 'l' && Around(i) == begin);
      if (direct && (m_plan[i].trace.attributes & kAttributeError) != 0) return true;
    }
    return false;
  }

 private:
  const Plan& m_plan;
};

class OutModelTest : public testing::TestWithParam<int> {
 protected:
  using Random = std::mt19937;
  static Plan MakePlan(Random& random) {
    Plan plan(20 + random() % 120);
    const unsigned threads = 1 + random() % 3, lossy = random() % 3;
    std::uint64_t serial = 0, ns = random() % 5'000'000;
    for (Played& played : plan) {
      played.thread = std::to_string(random() % threads);
      played.ns = ns += random() % 2'000'000;
      const unsigned draw = random() % 100;
      played.kind = draw < 35                 ? 'b'
                    : draw < 70               ? 'e'
                    : draw < 96 || lossy == 0 ? 'l'
                    : draw < 98               ? 'x'
                                              : 'r';
      const bool isLoss = played.kind == 'x' || played.kind == 'r';
      played.lost = isLoss ? 1 + random() % 5 : 0;
      serial += isLoss ? played.lost : 1;
      played.serial = serial;
      played.text = played.kind == 'b'   ? "Begin: " + std::to_string(random() % 4)
                    : played.kind == 'e' ? "End: " + std::to_string(random() % 4)
                    : played.kind == 'l' ? "text"
                                         : std::to_string(played.lost) + " traces lost: x";
    }
    for (Played& played : plan) {
      played.trace = played.kind == 'r' ? LossReport(played.text)
                                        : TraceAtNs(played.thread, played.text, played.ns);
      if (random() % 6 == 0) played.trace.attributes = kAttributeError;
    }
    return plan;
  }
  // In frames: what nothing reports stands in front of a frame, because it is told there.
  struct Cut {
    std::size_t from, to;
  };
  static std::vector<Cut> CutIntoFrames(const Plan& plan, Random& random) {
    std::vector<Cut> cuts;
    for (std::size_t at = 0; at < plan.size();) {
      std::size_t to = at + 1;
      const std::size_t most = at + 1 + random() % 9;
      while (to < plan.size() && to < most && plan[to].kind != 'x') ++to;
      cuts.push_back({at, to});
      at = to;
    }
    return cuts;
  }
  static void Send(const Plan& plan, const Cut& cut, OutSources& to, SentMessages& sent) {
    static const std::string instance(16, 'm');
    OutFrame frame;
    frame.instance = instance;
    std::vector<OutTrace> traces;
    for (std::size_t i = cut.from; i < cut.to; ++i) {
      frame.lost += plan[i].lost;
      frame.serial = plan[i].serial;
      if (plan[i].kind == 'x') continue;
      traces.push_back(plan[i].trace);
      frame.delivered += plan[i].kind != 'r';
    }
    frame.traces = traces;
    to.Take(frame, sent);
  }
  static SentMessages SendAll(const Plan& plan, const std::vector<Cut>& cuts) {
    OutSources sources("web1");
    SentMessages sent;
    for (const Cut& cut : cuts) Send(plan, cut, sources, sent);
    sources.End(sent);
    return sent;
  }

  void CheckLog(const Plan& plan, const LogRecord& log) {
    if (const std::int64_t lost = IntOf(log, "quor.lost"); lost > 0) {
      m_lost += static_cast<std::uint64_t>(lost);
      return;
    }
    const std::size_t at = AtSerial(plan, IntOf(log, "quor.serial"));
    ASSERT_NE(at, kNone);
    const Model model(plan);
    const std::size_t around = model.Around(at);
    EXPECT_TRUE(plan[at].kind == 'l' || (plan[at].kind == 'e' && around == kNone));
    EXPECT_EQ(log.span_id(), around == kNone ? "" : OutSpanId(m_instance, plan[around].serial));
    EXPECT_EQ(log.trace_id(), around == kNone ? "" : TraceIdOf(plan, model.Outermost(at)));
    EXPECT_TRUE(m_seen.insert(plan[at].serial).second);
  }
  void CheckSpan(const Plan& plan, const Span& span) {
    const Model model(plan);
    const std::size_t begin = AtSerial(plan, IntOf(span, "quor.serial"));
    ASSERT_NE(begin, kNone);
    ASSERT_EQ(plan[begin].kind, 'b');
    const std::size_t end = model.EndOf(begin), around = model.Around(begin);
    EXPECT_EQ(IntOf(span, "quor.end_serial"),
              end == kNone ? -1 : static_cast<std::int64_t>(plan[end].serial));
    EXPECT_EQ(Find(span, "quor.unfinished") != nullptr, end == kNone);
    EXPECT_EQ(span.span_id(), OutSpanId(m_instance, plan[begin].serial));
    EXPECT_EQ(span.parent_span_id(),
              around == kNone ? "" : OutSpanId(m_instance, plan[around].serial));
    EXPECT_EQ(span.trace_id(), TraceIdOf(plan, model.Outermost(begin)));
    EXPECT_EQ(span.status().code(), model.HasError(begin) ? 2u : 0u);
    if (end != kNone) {
      EXPECT_EQ(span.end_time_unix_nano() - span.start_time_unix_nano(),
                plan[end].ns - plan[begin].ns);
    }
    EXPECT_TRUE(m_seen.insert(plan[begin].serial).second);
    EXPECT_TRUE(end == kNone || m_seen.insert(plan[end].serial).second);
    m_spans[span.span_id()] = {span.start_time_unix_nano(), span.end_time_unix_nano()};
  }
  static std::size_t AtSerial(const Plan& plan, std::int64_t serial) {
    for (std::size_t i = 0; i < plan.size(); ++i)
      if (plan[i].lost == 0 && static_cast<std::int64_t>(plan[i].serial) == serial) return i;
    return kNone;
  }
  std::string TraceIdOf(const Plan& plan, std::size_t begin) const {
    return OutTraceId(m_instance, plan[begin].thread, plan[begin].serial);
  }

  const std::string m_instance = std::string(16, 'm');
  std::set<std::uint64_t> m_seen;
  std::uint64_t m_lost = 0;
  std::map<std::string, std::pair<std::uint64_t, std::uint64_t>> m_spans;
};

TEST_P(OutModelTest, EveryTraceIsInOneMessageAndBlocksNest) {
  Random random(static_cast<unsigned>(GetParam()));
  const Plan plan = MakePlan(random);
  const SentMessages sent = SendAll(plan, CutIntoFrames(plan, random));
  std::uint64_t traces = 0, lost = 0;
  for (const SentMessages::Sent& message : sent.all) {
    message.isSpan ? CheckSpan(plan, message.span) : CheckLog(plan, message.log);
    traces += message.weight.traces;
    lost += message.weight.lost;
  }
  EXPECT_EQ(m_seen.size() + m_lost, plan.back().serial);
  EXPECT_EQ(traces, m_seen.size());
  EXPECT_EQ(lost, m_lost);
  for (const SentMessages::Sent& message : sent.all) {
    if (!message.isSpan || message.span.parent_span_id().empty()) continue;
    const auto& [start, end] = m_spans.at(message.span.parent_span_id());
    EXPECT_GE(message.span.start_time_unix_nano(), start);
    EXPECT_LE(message.span.end_time_unix_nano(), end);
  }
}

TEST_P(OutModelTest, ASenderThatGoesOnSendsTheSameBytes) {
  Random random(static_cast<unsigned>(GetParam()) + 100'000);
  const Plan plan = MakePlan(random);
  const std::vector<Cut> cuts = CutIntoFrames(plan, random);
  const SentMessages whole = SendAll(plan, cuts);
  // It is saved behind some frames, sends more, is killed, and another one begins behind those.
  const std::size_t safe = random() % cuts.size();
  OutSources first("web1"), second("web1");
  SentMessages sent;
  quor::otlp::out::State state;
  for (std::size_t i = 0; i < safe; ++i) Send(plan, cuts[i], first, sent);
  first.Save(state);
  std::string bytes = state.SerializeAsString();
  SentMessages again;
  for (std::size_t i = safe; i < cuts.size() && random() % 5 != 0; ++i)
    Send(plan, cuts[i], first, again);
  quor::otlp::out::State loaded;
  ASSERT_TRUE(loaded.ParseFromString(bytes));
  ASSERT_TRUE(second.Load(loaded));
  for (std::size_t i = safe; i < cuts.size(); ++i) Send(plan, cuts[i], second, sent);
  second.End(sent);
  ASSERT_EQ(sent.all.size(), whole.all.size());
  for (std::size_t i = 0; i < sent.all.size(); ++i)
    EXPECT_EQ(sent.all[i].Bytes(), whole.all[i].Bytes()) << i;
}

INSTANTIATE_TEST_SUITE_P(Seeds, OutModelTest, testing::Range(0, 300));

}  // namespace
