#include "commands/file_follower.h"

#include <algorithm>

#include "filter/moment.h"
#include "terminal/interrupt.h"

namespace {

// A file that is numbered away is without a successor for a moment.
constexpr std::chrono::milliseconds kShortlyAway{900};

}  // namespace

FileFollower::FileFollower(const std::string& path, const DumpOptions& options,
                           FollowedTraces& traces)
    : m_path(path), m_options(options), m_traces(traces), m_file(path), m_watch(path) {}

void FileFollower::Say(const std::string& text) const {
  PrintError(m_path + ": " + text);
}

bool FileFollower::Fail(const std::string& why) const {
  Say(why);
  return false;
}

bool FileFollower::GoesOn() const {
  return !m_readerGone && !m_traces.IsOver() && !Interrupted();
}

// Is it later than --until?
bool FileFollower::IsPast() const {
  const std::uint64_t until = m_options.traces.choice.until;
  return until != TraceChoice::kNever && NowMs() >= MillisecondsOf(until);
}

bool FileFollower::Run() {
  bool good = Open();
  while (good && GoesOn()) good = m_file.IsOpen() ? Step() : Wait() && Open();
  m_progress.Clear();
  LeaveFile();
  return good && (m_traces.Why().empty() || Fail(m_traces.Why()));
}

bool FileFollower::Open() {
  std::string why;
  switch (m_file.Open(&why)) {
    case GrowingFile::Opened::Bad:
      return Fail(why);
    case GrowingFile::Opened::None:
      if (!m_saidAway) Say("not there yet; waiting for it");
      m_saidAway = true;
      return true;
    default:
      break;
  }
  m_watch.Follow(m_file.Descriptor());
  // What comes into being later has nothing that is there already.
  if (!m_saidAway) BeginSurvey();
  m_saidAway = false;
  return true;
}

void FileFollower::BeginSurvey() {
  m_phase = Phase::Names;
  m_presentEnd = m_file.Size();
}

bool FileFollower::Step() {
  std::string why;
  switch (m_file.Read(&why)) {
    case GrowingFile::Seen::Bad:
      return Fail(why);
    case GrowingFile::Seen::Anew:
      ReportDamage();
      m_traces.BeginFile();
      if (m_phase != Phase::Give) {
        BeginSurvey();
      } else {
        m_presentEnd = 0;
        Say("cut short; it is read from its beginning again");
      }
      return true;
    default:
      break;
  }
  if (m_phase != Phase::Give) {
    Look();
    return true;
  }
  const bool present = m_file.Position() < m_presentEnd;
  if (!present) m_traces.ForgetEnd();
  const std::size_t taken = m_traces.Give(PresentPiece(), m_file.Position(), present);
  m_file.Take(taken);
  // What was there is all given, or gone.
  if (taken == 0) m_presentEnd = 0;
  return taken > 0 || AtEnd();
}

// The end of the last whole record that was there at the beginning divides no record.
Bytes FileFollower::PresentPiece() const {
  const Bytes piece = m_file.Piece();
  const std::uint64_t position = m_file.Position();
  if (m_phase == Phase::Names || position >= m_presentEnd) return piece;
  return piece.first(std::min<std::uint64_t>(piece.size(), m_presentEnd - position));
}

void FileFollower::Look() {
  const Bytes piece = PresentPiece();
  const std::size_t taken =
      m_phase == Phase::Names ? m_traces.LearnNames(piece) : m_traces.Count(piece);
  m_file.Take(taken);
  m_progress.Show("Reading...", m_file.Position(), m_presentEnd);
  if (taken == 0 || m_file.Position() >= m_presentEnd) EndLook();
}

void FileFollower::EndLook() {
  const bool counts = m_options.traces.tail != TraceOptions::kAll;
  m_presentEnd = m_phase == Phase::Names ? m_file.Position() : m_presentEnd;
  if (m_phase == Phase::Count) m_traces.LeaveTail();
  m_phase = m_phase == Phase::Names && counts ? Phase::Count : Phase::Give;
  m_file.Rewind();
  m_progress.Clear();
}

bool FileFollower::AtEnd() {
  if (!m_traces.Out().Flush()) {
    m_readerGone = true;
    return true;
  }
  const bool cut = !m_file.Piece().empty(), blank = m_file.IsBlank();
  const std::uint64_t position = m_file.Position();
  std::string why;
  const GrowingFile::Moved moved = m_file.MoveOn(&why);
  switch (moved) {
    case GrowingFile::Moved::Bad:
      return Fail(why);
    case GrowingFile::Moved::No:
      m_away.reset();
      m_saidAway = false;
      NoteBlank();
      return Wait();
    case GrowingFile::Moved::Away:
      NoteAway();
      return Wait();
    default:
      m_damaged = m_damaged || blank;
      Enter(moved, cut, position);
      return true;
  }
}

void FileFollower::Enter(GrowingFile::Moved how, bool wasCut, std::uint64_t cutAt) {
  if (wasCut) m_traces.Damage().cutAt = cutAt;
  ReportDamage();
  if (how == GrowingFile::Moved::Replaced)
    Say("another file has taken its place; it is read from its beginning");
  if (how == GrowingFile::Moved::Later)
    Say("files were removed before they could be read; traces may be missing");
  m_lost = m_lost || how == GrowingFile::Moved::Later;
  m_traces.BeginFile();
  m_presentEnd = 0;
  m_away.reset();
  m_saidAway = m_saidBlank = false;
  m_watch.Follow(m_file.Descriptor());
}

void FileFollower::NoteBlank() {
  if (m_file.IsBlank() && !m_saidBlank)
    Say("zero bytes stand where its header belongs; waiting for the header");
  m_saidBlank = m_file.IsBlank();
}

// What stands behind zero bytes is not given.
void FileFollower::LeaveFile() {
  ReportDamage();
  m_damaged = m_damaged || (m_file.IsOpen() && m_file.IsBlank());
}

void FileFollower::NoteAway() {
  if (!m_away) m_away = Clock::now();
  if (m_saidAway || Clock::now() - *m_away < kShortlyAway) return;
  Say("gone; waiting for it to come back");
  m_saidAway = true;
}

bool FileFollower::Wait() {
  m_readerGone = IsPast() || !m_watch.Wait();
  return true;
}

void FileFollower::ReportDamage() {
  const TrcDamage& damage = m_traces.Damage();
  if (!damage.Any()) return;
  Say("damaged: " + DamageText(damage, true));
  m_damaged = true;
}
