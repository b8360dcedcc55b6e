#include "listview/source/text_file.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "base/fail_with.h"
#include "base/file_gate.h"
#include "base/text.h"

namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr char kTooLarge[] = "The file is too large to be shown: more than 16 MB.";
constexpr char kTooLong[] = "The file has a line that is too long to be shown: more than 256 KB.";
constexpr char kTooMany[] = "The file has too many lines to be shown: more than 1,000,000.";
constexpr char kNotText[] = "The file is not text: it holds zero bytes.";

bool ReadUpTo(int descriptor, std::size_t most, std::string& bytes) {
  bytes.clear();
  std::array<char, 65536> piece;
  while (bytes.size() < most) {
    const ssize_t count = read(descriptor, piece.data(), piece.size());
    if (count == 0) return true;
    if (count > 0) {
      bytes.append(piece.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

// Characters that separate lines in a text control but not in files. Shown as UTF-8 they would
// shift the line numbers after them.
bool HoldsSeparators(std::string_view utf8) {
  constexpr std::string_view kSeparators[] = {"\xE2\x80\xA9", "\xEF\xB7\x90", "\xEF\xB7\x91"};
  return std::any_of(std::begin(kSeparators), std::end(kSeparators),
                     [&](std::string_view each) { return utf8.find(each) != utf8.npos; });
}

std::string Utf8OfLatin1(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

// False if there is a character above U+00FF. REQUIRES: `text` is UTF-8.
bool Latin1OfUtf8(std::string_view text, std::string& bytes) {
  bytes.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) {
      bytes += text[at];
    } else if (lead > 0xC3 || at + 1 == text.size()) {
      return false;
    } else {
      bytes += static_cast<char>((lead << 6) | (static_cast<unsigned char>(text[++at]) & 0x3F));
    }
  }
  return true;
}

struct LineEnds {
  std::size_t both = 0, feed = 0, carriage = 0;
  std::size_t All() const { return both + feed + carriage; }
  std::string Most() const {
    if (both > feed && both >= carriage) return "\r\n";
    return carriage > feed ? "\r" : "\n";
  }
};

// Every line end becomes "\n"; false if an edit control could not handle the lines.
bool PartLines(std::string& text, std::string& lineEnd, std::string* why) {
  LineEnds ends;
  std::size_t to = 0, lineBegin = 0;
  for (std::size_t from = 0; from < text.size(); ++from) {
    if (ends.All() == TextFile::kMostLines) return FailWith(why, kTooMany);
    const char c = text[from];
    if (c != '\r' && c != '\n') {
      text[to++] = c;
      if (to - lineBegin > TextFile::kLongestLineBytes) return FailWith(why, kTooLong);
      continue;
    }
    const bool both = c == '\r' && from + 1 < text.size() && text[from + 1] == '\n';
    ++(both ? ends.both : c == '\n' ? ends.feed : ends.carriage);
    if (both) ++from;
    text[to++] = '\n';
    lineBegin = to;
  }
  text.resize(to);
  lineEnd = ends.Most();
  return true;
}

}  // namespace

bool DecodeText(std::string_view bytes, TextFile& file, std::string* why) {
  file = {};
  if (bytes.size() > TextFile::kLargestBytes) return FailWith(why, kTooLarge);
  if (bytes.find('\0') != bytes.npos) return FailWith(why, kNotText);
  file.latin1 = !IsUtf8(bytes) || HoldsSeparators(bytes);
  file.mark = !file.latin1 && bytes.substr(0, kMark.size()) == kMark;
  if (file.mark) bytes.remove_prefix(kMark.size());
  file.text = file.latin1 ? Utf8OfLatin1(bytes) : std::string(bytes);
  return PartLines(file.text, file.lineEnd, why);
}

bool ReadTextFile(const std::string& path, TextFile& file, std::string* why) {
  const OpenFile open = OpenForReading(path, why);
  if (!open) return false;
  std::string bytes;
  if (!ReadUpTo(open.Descriptor(), TextFile::kLargestBytes + 1, bytes))
    return FailWith(why, SystemReason());
  return DecodeText(bytes, file, why);
}

std::string EncodeText(const TextFile& file, std::string_view text) {
  std::string bytes;
  if (!file.latin1 || !Latin1OfUtf8(text, bytes)) bytes = text;
  if (file.mark) bytes.insert(0, kMark);
  if (file.lineEnd == "\n") return bytes;
  std::string ended;
  ended.reserve(bytes.size() + bytes.size() / 16);
  for (const char c : bytes) {
    if (c == '\n') {
      ended += file.lineEnd;
    } else {
      ended += c;
    }
  }
  return ended;
}
