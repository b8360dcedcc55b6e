// Reports the failed EXPECTs of a forked child to the test that forked it, because the child's own
// report is lost with the child.
#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdio>
#include <new>
#include <optional>

class ToldFailures {
 public:
  ToldFailures() {
    void* const memory =
        mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    m_told = new (memory) Told;
  }
  ~ToldFailures() { munmap(m_told, sizeof(Told)); }
  ToldFailures(const ToldFailures&) = delete;
  ToldFailures& operator=(const ToldFailures&) = delete;

  // In the child, before its first EXPECT.
  void TellFromHere() { m_teller.emplace(*m_told); }
  // In the test, when the child has ended. Fails once for all that the child found.
  void Take() {
    if (m_told->failures == 0) return;
    ADD_FAILURE() << m_told->failures << " failures in the child, the first: " << m_told->first;
    m_told->failures = 0;
  }

 private:
  struct Told {
    int failures = 0;
    char first[2000] = {};
  };
  class Teller final : public testing::ScopedFakeTestPartResultReporter {
   public:
    explicit Teller(Told& told)
        : ScopedFakeTestPartResultReporter(INTERCEPT_ALL_THREADS, nullptr), m_told(told) {}

   private:
    void ReportTestPartResult(const testing::TestPartResult& result) override {
      if (!result.failed()) return;
      if (m_told.failures++ != 0) return;
      const char* const file = result.file_name();
      std::snprintf(m_told.first, sizeof m_told.first, "%s:%d: %s", file ? file : "?",
                    result.line_number(), result.message());
    }
    Told& m_told;
  };

  Told* m_told;
  std::optional<Teller> m_teller;
};
