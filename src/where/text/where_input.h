// The tokens of a text that is being parsed, and its first error.
//
// Owner    Borrows the text and the error.
// Threads  One.
#pragma once

#include <string>
#include <string_view>

#include "where/text/where_lexer.h"
#include "where/text/where_next.h"
#include "where/text/where_parser.h"

class WhereInput {
 public:
  WhereInput(std::string_view text, WhereError& error)
      : m_text(text), m_error(error), m_token(WhereTokenAt(text, 0)) {}

  const WhereToken& Token() const { return m_token; }
  bool IsAtEnd() const { return m_token.kind == WhereToken::Kind::End; }
  WhereToken Following() const { return WhereTokenAt(m_text, m_token.EndPlace()); }
  // Goes on to the next token; gives the one that it leaves.
  WhereToken Take();
  // The place behind the token that was taken last.
  std::size_t TakenEnd() const { return m_takenEnd; }

  // All give false, so that a parser ends with them. `next` is what could stand at the token.
  bool Fail(std::string reason, const WhereNext& next = {}) {
    return FailAt(m_token, std::move(reason), next);
  }
  bool FailAt(const WhereToken& token, std::string reason, const WhereNext& next = {});
  bool FailAt(std::size_t place, std::size_t length, std::string reason);
  // What was expected at the end of the text; Nothing if the error stands before it.
  const WhereNext& Next() const { return m_next; }

  std::size_t open = 0;   // brackets
  std::size_t tests = 0;  // so far

 private:
  std::string_view m_text;
  WhereError& m_error;
  WhereToken m_token;
  WhereNext m_next;
  std::size_t m_takenEnd = 0;
};

// "\"Sql\"" for a message: a long word is cut.
std::string InQuotes(std::string_view word);
