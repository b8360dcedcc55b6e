#include "quor/relay/monitor/relay_feed.h"

#include <algorithm>
#include <utility>

namespace {

using namespace std::chrono_literals;
using State = EngineReader::State;
using Clock = std::chrono::steady_clock;

// How long the end of a feed may take.
constexpr std::chrono::milliseconds kAwhile{200};
constexpr std::chrono::milliseconds kPause{500};
constexpr std::size_t kWordsMax = 4096;

}  // namespace

RelayFeed::RelayFeed(MakeEngine make, FeedPlan plan, Take take)
    : m_make(std::move(make)),
      m_plan(std::move(plan)),
      m_take(std::move(take)),
      m_thread([this] { Run(); }) {}

RelayFeed::~RelayFeed() {
  {
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
  }
  m_thread.join();
}

void RelayFeed::GoOn() {
  const std::lock_guard lock(m_mutex);
  m_mayGoOn = true;
  m_changed.notify_all();
}

void RelayFeed::Restart(EngineStart start) {
  const std::lock_guard lock(m_mutex);
  m_restart = start;
  m_mayGoOn = true;
  m_changed.notify_all();
}

void RelayFeed::OnRefused(const std::string& what) {
  const std::lock_guard lock(m_mutex);
  m_refused = what;
}

void RelayFeed::OnDown(const std::string& why) {
  const std::lock_guard lock(m_mutex);
  m_down = why.empty() ? "no connection" : why;
}

void RelayFeed::OnUp(const std::string&) {
  const std::lock_guard lock(m_mutex);
  m_down.clear();
  m_refused.clear();
}

// A refused permission shows as silence, and so does an engine that is not reached.
std::string RelayFeed::WordsFor(const std::string& why) {
  const std::lock_guard lock(m_mutex);
  if (!m_down.empty()) return "the engine is not reached: " + m_down;
  return m_refused.empty() ? why : "the engine refuses: " + m_refused;
}

bool RelayFeed::IsEnded() {
  const std::lock_guard lock(m_mutex);
  return m_ended;
}

void RelayFeed::Pause() {
  std::unique_lock lock(m_mutex);
  m_changed.wait_for(lock, kPause, [this] { return m_ended; });
}

void RelayFeed::Run() {
  while (!IsEnded()) {
    std::string why;
    if (Open(&why)) {
      Read();
      continue;
    }
    FedPiece piece;
    piece.state = State::Broken;
    piece.why = WordsFor(why);
    piece.isHopeless = m_engine == nullptr;
    HandOver(piece);
    Pause();
  }
  m_reader.reset();
  m_wordReader.reset();
  m_engine.reset();
}

bool RelayFeed::Open(std::string* why) {
  if (m_reader && !m_again) return true;
  m_again = false;
  m_reader.reset();
  m_wordReader.reset();
  m_words.clear();
  m_sequence = 0;
  if (!m_engine) m_engine = m_make(*this, why);
  if (!m_engine) return false;
  if (!m_plan.words.empty() && !(m_wordReader = m_engine->Read(m_plan.words, m_plan.start, why)))
    return false;
  m_reader = m_engine->Read(m_plan.messages, m_plan.start, why);
  return m_reader != nullptr;
}

void RelayFeed::Read() {
  std::vector<EngineMessage> messages;
  FedPiece piece;
  const auto began = Clock::now();
  piece.state = m_reader->Next(kAwhile, messages, &piece.why);
  if (piece.state == State::BegunAnew) {
    m_sequence = 0;
    m_words.clear();
  }
  const std::size_t before = m_words.size();
  const bool answers = piece.state == State::Messages || piece.state == State::Quiet;
  if (answers) m_now += Clock::now() - began;
  const State state = piece.state;
  for (const EngineMessage& message : messages) {
    m_sequence = message.sequence;
    Add(message, piece);
    if (m_bytes < kPieceBytes) continue;
    HandOver(piece);
    if (m_again || IsEnded()) return;
    piece.state = state;
  }
  // All that was stored before the words that had come has been given out.
  if (state == State::Quiet && before > 0)
    m_sequence = std::max(m_sequence, m_words[before - 1].sequence);
  if (state != State::Broken) ReadWords(piece);
  if (piece.state == State::Broken) piece.why = WordsFor(piece.why);
  HandOver(piece);
}

void RelayFeed::ReadWords(FedPiece& piece) {
  if (!m_wordReader) return;
  while (!m_words.empty() && m_words.front().sequence <= m_sequence) {
    piece.items.push_back(std::move(m_words.front().item));
    m_words.pop_front();
  }
  // More wait in the engine: a slow monitor holds no more of them here.
  if (m_words.size() > kWordsMax) return;
  std::vector<EngineMessage> messages;
  if (m_wordReader->Next(0ms, messages, &piece.whyNoWords) == State::Broken)
    piece.whyNoWords = WordsFor(piece.whyNoWords);
  for (const EngineMessage& message : messages) {
    FedPiece words;
    Add(message, words);
    for (FedItem& item : words.items) m_words.push_back({message.sequence, std::move(item)});
    piece.malformed += words.malformed;
    if (words.malformed > 0) piece.whyMalformed = words.whyMalformed;
  }
}

void RelayFeed::Add(const EngineMessage& message, FedPiece& piece) {
  FedItem item;
  bool isWord = false;
  std::string why = "its subject is none of these";
  const bool isOurs = ReadSubject(message.subject, item.machine, item.app, isWord);
  if (isOurs && isWord && ReadWord(message.body, item.word, &why)) {
    if (!m_plan.app.empty())
      std::erase_if(item.word.sources,
                    [this](const SourceWord& line) { return line.app != m_plan.app; });
    // Of a long name the subject has only a beginning.
    if (WordSubject(item.word.machine) == message.subject) item.machine = item.word.machine;
    piece.items.push_back(std::move(item));
    return;
  }
  RelayMessage read;
  if (isOurs && !isWord && ReadEnvelope(message.body, read.envelope, &why)) {
    const Envelope& envelope = read.envelope;
    if (EnvelopeSubject(envelope.machine, envelope.app) == message.subject) {
      item.machine = envelope.machine;
      item.app = envelope.app;
    }
    read.arrived = message.arrived;
    m_bytes += read.Bytes();
    item.message = std::move(read);
    piece.items.push_back(std::move(item));
    return;
  }
  ++piece.malformed;
  piece.whyMalformed = message.subject + ": " + why;
}

void RelayFeed::HandOver(FedPiece& piece) {
  piece.now = m_now;
  m_bytes = 0;
  {
    const std::lock_guard lock(m_mutex);
    m_mayGoOn = false;
  }
  m_take(std::exchange(piece, {}));
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_mayGoOn || m_ended; });
  if (!m_restart) return;
  m_plan.start = *m_restart;
  m_restart.reset();
  m_again = true;
}
