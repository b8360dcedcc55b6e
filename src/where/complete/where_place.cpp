#include "where/complete/where_place.h"

#include "where/text/where_lexer.h"

namespace {

using TokenKind = WhereToken::Kind;

// The token that ends at the end of the text; an End token if blanks do.
WhereToken LastToken(std::string_view text) {
  WhereToken last;
  for (std::size_t place = 0;;) {
    const WhereToken token = WhereTokenAt(text, place);
    if (token.kind == TokenKind::End) break;
    last = token;
    place = token.EndPlace();
  }
  if (last.EndPlace() == text.size()) return last;
  return {TokenKind::End, text.size(), text.substr(text.size())};
}

// Signs that may become a longer operator, or are none of ours yet.
bool IsPartOfOperator(const WhereToken& token) {
  for (const char* sign : {"=", "!", "<", ">"})
    if (token.IsSign(sign)) return true;
  return false;
}

// The part of a quoted text that is typed. Half an escape at its end is left out.
std::string TypedText(std::string_view unterminated) {
  std::string closed = std::string(unterminated) + '"';
  if (WhereTokenAt(closed, 0).kind != TokenKind::Quoted) {
    closed.pop_back();
    closed.back() = '"';
  }
  WhereQuotedFault fault;
  const auto text = Unquoted(closed, false, fault);
  return text ? *text : closed.substr(1, closed.size() - 2);
}

// With a quote too few in the whole, the next one begins another text.
bool IsClosedBehind(std::string_view text, std::size_t from) {
  for (std::size_t place = from;;) {
    const WhereToken token = WhereTokenAt(text, place);
    if (token.kind == TokenKind::End) return true;
    if (token.kind == TokenKind::Unterminated) return false;
    place = token.EndPlace();
  }
}

}  // namespace

WherePlace WherePlaceAt(std::string_view text, std::size_t caret) {
  WherePlace place;
  const WhereToken last = LastToken(text.substr(0, caret));
  if (last.kind == TokenKind::Quoted || last.kind == TokenKind::Strange) return place;
  place.isQuoted = last.kind == TokenKind::Unterminated;
  const bool isTyped = last.kind == TokenKind::Word || place.isQuoted || IsPartOfOperator(last);
  place.from = isTyped ? last.place : caret;
  place.next = NextInWhere(text.substr(0, place.from));
  // "!" that is no beginning of "!=".
  if (last.kind == TokenKind::Sign && isTyped && place.next.what != WhereNext::What::Operator) {
    place.from = caret;
    place.next = NextInWhere(text.substr(0, caret));
  }
  place.typed = place.isQuoted ? TypedText(last.text) : text.substr(place.from, caret - place.from);
  place.to = caret;
  if (place.isQuoted) {
    if (IsClosedBehind(text, place.from)) place.to = WhereTokenAt(text, place.from).EndPlace();
  } else if (last.kind != TokenKind::Sign || place.from == caret) {
    while (place.to < text.size() && IsWhereWordByte(text[place.to])) ++place.to;
  }
  return place;
}
