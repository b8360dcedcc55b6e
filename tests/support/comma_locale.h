// A locale of the test whose decimal point is a comma, because a machine may have none.
#pragma once

#include <stdlib.h>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "support/temp_dir.h"

// Prints all numbers of the program with a comma, until the end of the scope.
class CommaLocale {
 public:
  CommaLocale() : m_before(std::setlocale(LC_NUMERIC, nullptr)) {
    std::filesystem::create_directory(m_directory.File(kName));
    m_directory.File(std::string(kName) + "/LC_NUMERIC", Compiled());
    setenv("LOCPATH", m_directory.Path().c_str(), 1);
    std::setlocale(LC_NUMERIC, kName);
    unsetenv("LOCPATH");
    if (Printed() != "1,5") throw std::runtime_error("no locale with a comma");
  }
  ~CommaLocale() { std::setlocale(LC_NUMERIC, m_before.c_str()); }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  // How the C library prints 1.5.
  static std::string Printed() {
    char text[8] = {};
    std::snprintf(text, sizeof text, "%g", 1.5);
    return text;
  }

 private:
  static constexpr const char* kName = "comma";

  // The numbers of a locale in the C library's file format: a mark, the number of items, their
  // offsets, then the items (decimal point, thousands separator, digits of a group, both as wide
  // characters, the name of the character set).
  static std::string Compiled() {
    const std::uint32_t head[] = {0x20031114, 6, 32, 34, 36, 40, 44, 48};
    const std::uint32_t wide[] = {',', '.'};
    return std::string(reinterpret_cast<const char*>(head), sizeof head) +
           std::string(",\0.\0\3\3\0\0", 8) +
           std::string(reinterpret_cast<const char*>(wide), sizeof wide) +
           std::string("ANSI_X3.4-1968", 15);
  }

  const TempDir m_directory;
  const std::string m_before;
};
