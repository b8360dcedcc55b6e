#include "documents/conversion_under_way.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>

namespace {

constexpr std::chrono::seconds kExitPatience{3};  // a disk may hang

struct ConversionLedger {
  std::mutex mutex;
  std::condition_variable ended;
  std::atomic<int> count = 0;
  std::atomic<bool> givenUp = false;
};

ConversionLedger& Ledger() {
  // Never destroyed: a thread may outlive the program's end.
  static ConversionLedger& ledger = *new ConversionLedger;
  return ledger;
}

void GiveUpAtExit() {
  ConversionUnderWay::GiveUpAll();
  ConversionLedger& ledger = Ledger();
  std::unique_lock lock(ledger.mutex);
  ledger.ended.wait_for(lock, kExitPatience, [&ledger] { return ledger.count == 0; });
}

}  // namespace

ConversionUnderWay::ConversionUnderWay() {
  static std::once_flag once;
  std::call_once(once, [] { std::atexit(GiveUpAtExit); });
  ++Ledger().count;
}

ConversionUnderWay::~ConversionUnderWay() {
  ConversionLedger& ledger = Ledger();
  const std::lock_guard lock(ledger.mutex);
  --ledger.count;
  ledger.ended.notify_all();
}

void ConversionUnderWay::GiveUpAll() {
  Ledger().givenUp = true;
}

bool ConversionUnderWay::AllGivenUp() {
  return Ledger().givenUp;
}
