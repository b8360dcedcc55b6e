// Cuts a filter text into its words and signs.
//
// Errors   None: what is no word of the language is a token too. The tokens cover every byte that
//          is no blank.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct WhereToken {
  enum class Kind : std::uint8_t {
    End,
    Word,          // letters, digits and _ . / : + -
    Quoted,        // with its quotes
    Unterminated,  // a quoted text up to the end of the whole
    Sign,          // ( ) { } , and operators, also signs that are none, such as "="
    Strange,       // one character of any other kind
  };
  Kind kind = Kind::End;
  std::size_t place = 0;
  std::string_view text;  // within the whole text

  std::size_t EndPlace() const { return place + text.size(); }
  bool IsSign(std::string_view sign) const { return kind == Kind::Sign && text == sign; }
  bool IsWord(std::string_view word) const;  // in any capitals
};

bool IsWhereWordByte(char c);
bool IsWhereBlank(char c);

// The token that begins at `place` or behind the blanks there. At the end: an End token.
WhereToken WhereTokenAt(std::string_view text, std::size_t place);

// What stands between the quotes of a token. A pattern keeps its backslashes, because PCRE2 reads
// them; only the quotes are taken away. Errors: a reason, with its place within the token.
struct WhereQuotedFault {
  std::size_t place = 0, length = 0;
  std::string reason;
};
std::optional<std::string> Unquoted(std::string_view quoted, bool pattern, WhereQuotedFault& fault);

// The bytes of the character at `place`: 1 to 4; 0 if it is malformed. REQUIRES: place < size.
std::size_t CharacterBytes(std::string_view text, std::size_t place);
// Would a terminal or a line of text show this character as something else, or not at all? Control
// characters, malformed bytes and marks of direction. `bytes` as CharacterBytes gives them.
bool IsHiddenCharacter(std::string_view text, std::size_t place, std::size_t bytes);
