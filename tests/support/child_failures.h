// Reports the failed EXPECTs of a forked child to the test that forked it, because the child's own
// report is lost with the child.
#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdio>
#include <new>
#include <optional>

class ChildFailures {
 public:
  ChildFailures() {
    void* const memory =
        mmap(nullptr, sizeof(Reported), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    m_reported = new (memory) Reported;
  }
  ~ChildFailures() { munmap(m_reported, sizeof(Reported)); }
  ChildFailures(const ChildFailures&) = delete;
  ChildFailures& operator=(const ChildFailures&) = delete;

  // In the child, before its first EXPECT.
  void ReportFromHere() { m_reporter.emplace(*m_reported); }
  // In the test, when the child has ended. Fails once for all that the child found.
  void Take() {
    if (m_reported->failures == 0) return;
    ADD_FAILURE() << m_reported->failures
                  << " failures in the child, the first: " << m_reported->first;
    m_reported->failures = 0;
  }

 private:
  struct Reported {
    int failures = 0;
    char first[2000] = {};
  };
  class Reporter final : public testing::ScopedFakeTestPartResultReporter {
   public:
    explicit Reporter(Reported& reported)
        : ScopedFakeTestPartResultReporter(INTERCEPT_ALL_THREADS, nullptr), m_reported(reported) {}

   private:
    void ReportTestPartResult(const testing::TestPartResult& result) override {
      if (!result.failed()) return;
      if (m_reported.failures++ != 0) return;
      const char* const file = result.file_name();
      std::snprintf(m_reported.first, sizeof m_reported.first, "%s:%d: %s", file ? file : "?",
                    result.line_number(), result.message());
    }
    Reported& m_reported;
  };

  Reported* m_reported;
  std::optional<Reporter> m_reporter;
};
