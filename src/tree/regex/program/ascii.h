// Character classes of the matcher. No locale is ever set: letters and digits are the ASCII ones.
#pragma once

#include <cstdint>

constexpr unsigned char kCr = '\r', kLf = '\n';

constexpr bool IsAsciiLetter(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool IsAsciiDigit(unsigned char c) {
  return c >= '0' && c <= '9';
}
// A letter, a digit or "_": the bytes of a word.
constexpr bool IsWordByte(unsigned char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '_';
}
// Upper and lower case of a letter differ in this bit alone.
constexpr unsigned char kAsciiCaseBit = 0x20;
