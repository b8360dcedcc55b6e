// A step of the interface thread that other threads ask for: queued once at a time, and never run
// after its owner's end.
//
// Owner    A member of the object that the step works on. The host outlives it.
// Threads  Ask from any thread, as long as a Line is held; everything else on the interface thread.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "docview/host.h"

class PostedStep {
 public:
  // What other threads hold.
  class Line : public std::enable_shared_from_this<Line> {
   public:
    explicit Line(Host& host, std::function<void()> step)
        : m_host(&host), m_step(std::move(step)) {}

    void Ask() {
      const std::lock_guard lock(m_mutex);
      if (!m_host || std::exchange(m_queued, true)) return;
      m_host->Post([self = shared_from_this()] { self->Run(); });
    }
    void Cut() {
      const std::lock_guard lock(m_mutex);
      m_host = nullptr;
    }

   private:
    // The step may destroy its owner.
    void Run() {
      {
        const std::lock_guard lock(m_mutex);
        m_queued = false;
        if (!m_host) return;
      }
      m_step();
    }

    std::mutex m_mutex;  // held while another thread uses the host
    Host* m_host;        // null after the owner's end
    bool m_queued = false;
    const std::function<void()> m_step;
  };

  PostedStep(Host& host, std::function<void()> step)
      : m_line(std::make_shared<Line>(host, std::move(step))) {}
  ~PostedStep() { m_line->Cut(); }
  PostedStep(const PostedStep&) = delete;
  PostedStep& operator=(const PostedStep&) = delete;

  void Ask() { m_line->Ask(); }
  std::shared_ptr<Line> GetLine() const { return m_line; }

 private:
  const std::shared_ptr<Line> m_line;
};
