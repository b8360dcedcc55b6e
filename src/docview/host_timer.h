// A timer of the host that ends with its owner.
//
// Owner    A member of the object that the tick works on; a tick may end it. Borrows the host.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <utility>

#include "docview/host.h"

class HostTimer {
 public:
  HostTimer(Host& host, unsigned milliseconds, std::function<void()> tick)
      : m_host(host), m_id(host.SetTimer(milliseconds, std::move(tick))) {}
  ~HostTimer() { m_host.KillTimer(m_id); }
  HostTimer(const HostTimer&) = delete;
  HostTimer& operator=(const HostTimer&) = delete;

 private:
  Host& m_host;
  const TimerId m_id;
};
