// Counted references to the tracing library's objects. The count is in the object, which is
// destroyed through its virtual destructor when the count falls to zero.
//
// Threads  Ref_t counts with a plain integer: one thread. MTRef_t counts atomically.
#pragma once

#include <atomic>
#include <utility>

namespace QuorRef {

class Ref_t {
 public:
  virtual ~Ref_t() = default;
  void AddRef() { ++m_count; }
  void Release() {
    if (--m_count == 0) delete this;
  }

 private:
  int m_count = 0;
};

class MTRef_t {
 public:
  virtual ~MTRef_t() = default;
  void AddRef() { m_count.fetch_add(1, std::memory_order_relaxed); }
  void Release() {
    if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  std::atomic<int> m_count{0};
};

}  // namespace QuorRef

// Null is allowed.
template <class T>
class QuorPtr {
 public:
  QuorPtr() = default;
  QuorPtr(T* object) : m_object(object) {  // NOLINT: converts like a pointer
    if (m_object) m_object->AddRef();
  }
  QuorPtr(const QuorPtr& other) : QuorPtr(other.m_object) {}
  QuorPtr(QuorPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  QuorPtr& operator=(QuorPtr other) noexcept {
    std::swap(m_object, other.m_object);
    return *this;
  }
  ~QuorPtr() {
    if (m_object) m_object->Release();
  }

  T* operator->() const { return m_object; }
  T& operator*() const { return *m_object; }
  T* Get() const { return m_object; }
  explicit operator bool() const { return m_object != nullptr; }
  friend bool operator==(const QuorPtr& a, const T* b) { return a.m_object == b; }
  friend bool operator==(const QuorPtr& a, const QuorPtr& b) { return a.m_object == b.m_object; }

 private:
  T* m_object = nullptr;
};
