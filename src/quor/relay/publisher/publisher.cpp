#include "quor/relay/publisher/publisher.h"

#include <algorithm>

namespace {

using std::chrono::milliseconds;

// So many answers in a row whose sequence is too low are no lie: the stream has begun anew.
constexpr unsigned kFallsMax = 3;
constexpr std::uint64_t kAllEvery = 10;  // words
constexpr unsigned kAttemptBits = 8;

std::string HexOf(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text.push_back(kDigits[static_cast<std::uint8_t>(byte) >> 4]);
    text.push_back(kDigits[static_cast<std::uint8_t>(byte) & 15]);
  }
  return text;
}

}  // namespace

Publisher::Publisher(Engine& engine, std::string stream, std::string machine, std::string run,
                     PublisherLimits limits)
    : m_engine(engine),
      m_engineStream(std::move(stream)),
      m_machine(std::move(machine)),
      m_run(std::move(run)),
      m_limits(limits),
      m_pause(limits.pause) {}

void Publisher::BeginStream(const std::string& id, const std::optional<Kept>& earlier) {
  m_stream = std::make_shared<const std::string>(id);
  m_isResumed = earlier.has_value();
  m_skipped = earlier ? earlier->frames : 0;
  if (earlier) m_highest = std::max(m_highest, earlier->highest);
  if (earlier) m_taken = *earlier;
  m_fresh = 0;
}

void Publisher::Add(PartedFrame frame, Time now) {
  if (frame.number <= m_skipped) {
    for (const Envelope& envelope : frame.envelopes) m_sources.Learn(envelope, !frame.isNameless);
    frame.envelopes.clear();
  }
  for (std::size_t i = 0; i < frame.envelopes.size(); ++i) AddEnvelope(frame, i, now);
  for (const std::string& instance : frame.forgotten) m_sources.Forget(instance);
  if (!frame.forgotten.empty()) SayWord();
  // Nothing of it goes out: it is taken with what goes before it.
  if (frame.envelopes.empty()) {
    if (m_queue.empty()) return NoteTaken(m_stream, frame.number);
    Message& last = m_queue.back();
    if (last.frames == 0 || *last.stream == *m_stream) {
      last.stream = m_stream;
      last.frames = frame.number;
    }
  }
}

void Publisher::AddEnvelope(const PartedFrame& frame, std::size_t part, Time now) {
  const Envelope& envelope = frame.envelopes[part];
  Message message;
  message.id = HexOf(*m_stream) + ":" + std::to_string(frame.number) + "." + std::to_string(part);
  message.stream = m_stream;
  if (part + 1 == frame.envelopes.size()) message.frames = frame.number;
  message.delivered = envelope.delivered;
  message.lost = envelope.lost;
  message.isResumed = m_isResumed;
  m_sources.Learn(envelope, !frame.isNameless);
  if (frame.isNameless) {
    message.nameless = std::make_unique<Envelope>(envelope);
  } else {
    message.subject = EnvelopeSubject(envelope.machine, envelope.app);
    WriteEnvelope(envelope, message.body, nullptr);  // parts are small enough for it
  }
  Push(std::move(message), now);
}

void Publisher::Push(Message message, Time now) {
  message.came = now;
  m_queuedBytes += message.body.size();
  m_queue.push_back(std::move(message));
}

void Publisher::AddWords(Time now) {
  if (!m_nextWord) m_nextWord = now + m_limits.word;
  if ((now < *m_nextWord && !m_isWordDue) || m_words > 0 || !m_stream) return;
  m_nextWord = now + m_limits.word;
  m_isWordDue = false;
  const bool all = m_word % kAllEvery == 0;
  if (!m_sources.HasChanged() && !all) {
    ++m_word;
    return;
  }
  for (const MachineWord& word : m_sources.Words(all, m_machine)) {
    Message message;
    message.isWord = true;
    message.id = HexOf(*m_stream) + ":" + m_run + "." + std::to_string(m_word++);
    message.subject = WordSubject(word.machine);
    message.stream = m_stream;
    if (!WriteWord(word, message.body, nullptr)) continue;
    ++m_words;
    Push(std::move(message), now);
  }
  if (all) ++m_word;
}

// A loss in front of the first trace of its source: the trace that names it mostly comes at once.
bool Publisher::IsReady(Message& message, Time now) {
  if (!message.nameless) return true;
  Envelope& envelope = *message.nameless;
  if (const SourceNaming* const naming = m_sources.Find(envelope.instance)) {
    envelope.machine = naming->machine;
    envelope.app = naming->app;
    envelope.pid = naming->pid;
  } else if (now - message.came < m_limits.nameless) {
    return false;
  } else {
    envelope.machine = m_machine;
  }
  message.subject = EnvelopeSubject(envelope.machine, envelope.app);
  WriteEnvelope(envelope, message.body, nullptr);
  m_queuedBytes += message.body.size();
  message.nameless.reset();
  return true;
}

bool Publisher::Send(std::size_t at, Time now) {
  Message& message = m_queue[at];
  const std::uint64_t number = m_first + at;
  if (message.attempts == 0) message.after = m_highest;
  m_counts.repeated += message.attempts > 0 ? 1 : 0;
  ++message.attempts;
  ++message.attemptsOfId;
  message.sent = now;
  const std::uint64_t token = number << kAttemptBits | (message.attempts & 255);
  std::string why;
  if (m_engine.Publish(message.subject, message.id, message.body, token, &why)) return true;
  Stop(why, now);
  return false;
}

void Publisher::Go(Time now) {
  AddWords(now);
  if (m_isStopped && now < m_resume) return;
  m_isStopped = false;
  for (std::size_t i = 0; i < m_next; ++i)
    if (!m_queue[i].isAcked && now - m_queue[i].sent >= m_limits.answer)
      return Stop("the engine does not answer", now);
  while (m_next < m_queue.size() && m_next < m_limits.messages) {
    Message& message = m_queue[m_next];
    if (!message.isAcked) {
      if (!IsReady(message, now)) return;
      if (m_next > 0 && m_bytes + message.body.size() > m_limits.bytes) return;
      if (!Send(m_next, now)) return;
    }
    m_bytes += message.body.size();
    ++m_next;
  }
}

void Publisher::Stop(const std::string& why, Time now) {
  if (m_trouble.empty() || !why.empty()) m_trouble = why;
  if (m_isStopped) return;
  m_isStopped = true;
  m_next = m_bytes = 0;
  const auto half = m_pause / 2;
  m_resume = now + half + milliseconds(m_random() % (half.count() + 1));
  m_pause = std::min(2 * m_pause, m_limits.longestPause);
}

Publisher::Time Publisher::WakeAt(Time now) const {
  // No word is due while one is under way.
  const bool mayWord = m_words == 0 && m_stream;
  Time at = mayWord ? std::max(now, m_nextWord.value_or(now)) : now + m_limits.word;
  if (m_isStopped) return std::min(at, std::max(now, m_resume));
  for (std::size_t i = 0; i < m_next; ++i)
    if (!m_queue[i].isAcked) at = std::min(at, m_queue[i].sent + m_limits.answer);
  if (m_next < m_queue.size() && m_queue[m_next].nameless)
    at = std::min(at, m_queue[m_next].came + m_limits.nameless);
  return at;
}

Publisher::Belief Publisher::Judge(const Message& message, const EngineAck& ack, std::string& why) {
  if (!ack.stored) {
    why = ack.why.empty() ? "the engine has not stored a message" : ack.why;
    return Belief::No;
  }
  if (ack.stream != m_engineStream) {
    why = "another stream answers: " + ack.stream;
    return Belief::No;
  }
  if (!ack.duplicate) return JudgeSequence(ack, why);
  // An earlier run may have sent so many of the stream that goes on. As long as no sequence was
  // known when it went out, nothing tells a true duplicate from a false one.
  const bool mayBeKnown = message.isResumed && m_fresh < m_limits.messages;
  const bool wasSent = message.attemptsOfId > 1 || mayBeKnown;
  if (wasSent && message.after > 0 && ack.sequence > message.after) return Belief::Yes;
  why = "the engine says that it has a message, which cannot be so";
  return Belief::OtherId;
}

Publisher::Belief Publisher::JudgeSequence(const EngineAck& ack, std::string& why) {
  if (ack.sequence > m_highest) return Belief::Yes;
  why = "the sequence of the engine's answers falls";
  if (++m_fell < kFallsMax) return Belief::No;
  why = "the engine's stream has begun anew";
  m_fell = 0;
  m_highest = 0;
  for (Message& other : m_queue) other.after = 0;
  return Belief::No;
}

void Publisher::OnAck(std::uint64_t token, const EngineAck& ack, Time now) {
  const std::uint64_t number = token >> kAttemptBits;
  if (number < m_first || number - m_first >= m_queue.size()) return;
  Message& message = m_queue[number - m_first];
  const bool isLast = (token & 255) == (message.attempts & 255);
  if (message.isAcked || message.attempts == 0) return;
  // What went before says nothing of what is under way, unless it says that it has arrived.
  if (!isLast && (!ack.stored || ack.duplicate)) return;
  std::string why;
  const Belief belief = Judge(message, ack, why);
  if (belief == Belief::Yes) return Believe(message, ack);
  Doubt(message, belief, why, now);
}

void Publisher::Doubt(Message& message, Belief belief, const std::string& why, Time now) {
  ++m_counts.unbelieved;
  if (belief == Belief::OtherId) {
    message.id += "." + m_run + "." + std::to_string(message.attempts);
    message.attemptsOfId = 0;
  }
  Stop(why, now);
}

void Publisher::Believe(Message& message, const EngineAck& ack) {
  message.isAcked = true;
  m_fell = 0;
  if (!ack.duplicate) {
    m_highest = ack.sequence;
    ++m_fresh;
  }
  ++m_counts.messages;
  m_counts.bytes += message.body.size();
  m_counts.delivered += message.delivered;
  m_counts.lost += message.lost;
  if (!m_isStopped) {
    m_pause = m_limits.pause;
    m_trouble.clear();
  }
  TakeFront();
}

void Publisher::TakeFront() {
  while (!m_queue.empty() && m_queue.front().isAcked) {
    const Message& front = m_queue.front();
    if (front.frames > 0) NoteTaken(front.stream, front.frames);
    if (front.isWord) --m_words;
    if (m_next > 0) {
      --m_next;
      m_bytes -= front.body.size();
    }
    m_queuedBytes -= front.body.size();
    m_queue.pop_front();
    ++m_first;
  }
}

void Publisher::NoteTaken(const std::shared_ptr<const std::string>& stream, std::uint64_t frames) {
  m_taken = {*stream, frames, m_highest};
}
