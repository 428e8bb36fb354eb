// AutoPtr<T>: the single owner of one variable-size buffer whose first bytes
// are a T (or an array of T), as the system returns for records that carry
// their own strings.
//
// Thread safety: reset() exchanges the held buffer atomically, so one thread
// may refill a holder while another drops its own; reading the buffer while it
// is being replaced is the caller's race.
#pragma once

#include <qz/export.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

template <class T>
class AutoPtr {
 public:
  AutoPtr() noexcept : buffer_(nullptr) {}
  AutoPtr(const AutoPtr&) = delete;
  AutoPtr& operator=(const AutoPtr&) = delete;
  AutoPtr(AutoPtr&& other) noexcept : buffer_(other.buffer_.exchange(nullptr)) {}
  AutoPtr& operator=(AutoPtr&& other) noexcept {
    if (this != &other) std::free(buffer_.exchange(other.buffer_.exchange(nullptr)));
    return *this;
  }
  ~AutoPtr() { std::free(buffer_.load()); }

  // Replaces the buffer with a new one of `bytes` bytes (not initialised) and
  // frees the old one; returns the new buffer. Throws std::bad_alloc.
  T* allocate(std::size_t bytes) {
    void* fresh = std::malloc(bytes ? bytes : 1);
    if (!fresh) throw std::bad_alloc();
    std::free(buffer_.exchange(fresh));
    return get();
  }
  // Frees the buffer.
  void reset() noexcept { std::free(buffer_.exchange(nullptr)); }

  T* get() const noexcept { return static_cast<T*>(buffer_.load()); }
  T* operator->() const noexcept { return get(); }
  T& operator*() const noexcept { return *get(); }
  T& operator[](std::size_t i) const noexcept { return get()[i]; }
  explicit operator bool() const noexcept { return get() != nullptr; }

 private:
  std::atomic<void*> buffer_;
};
