// PCRE2 with its compiler, alone: the floor of searches by regular expressions.
//
// Errors   It ends the program when the expression does not compile.
// Threads  One.
#pragma once

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

class Pcre2Peer {
 public:
  explicit Pcre2Peer(const char* expression, std::uint32_t options = 0,
                     pcre2_compile_context* context = nullptr) {
    int error = 0;
    std::size_t place = 0;
    m_code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression), PCRE2_ZERO_TERMINATED, options,
                           &error, &place, context);
    if (!m_code || pcre2_jit_compile(m_code, PCRE2_JIT_COMPLETE) != 0) std::exit(2);
    m_match = pcre2_match_data_create(1, nullptr);
  }
  ~Pcre2Peer() {
    pcre2_match_data_free(m_match);
    pcre2_code_free(m_code);
  }
  Pcre2Peer(const Pcre2Peer&) = delete;
  Pcre2Peer& operator=(const Pcre2Peer&) = delete;

  bool Finds(std::string_view text) const {
    return pcre2_jit_match(m_code, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0, 0,
                           m_match, nullptr) >= 0;
  }

 private:
  pcre2_code* m_code;
  pcre2_match_data* m_match;
};
