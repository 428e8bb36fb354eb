// Intrusive reference counting: SmartPtrObj and SmartPtr<T>.
//
// An object that is shared derives (usually virtually) from SmartPtrObj and is
// held through SmartPtr<T>. A fresh object has count 0; each SmartPtr that
// takes it adds one, and the holder whose release brings the count to exactly
// 0 deletes it through the virtual destructor.
//
// Thread safety: the count changes only by interlocked 32-bit operations, so
// SmartPtr copies of one object may be made and dropped on any threads at
// once. One SmartPtr variable must not be assigned on one thread while it is
// read on another.
#pragma once

#include <qz/export.h>

#include <string>
#include <utility>

class QZ_API SmartPtrObj {
 public:
  SmartPtrObj() noexcept : ref_count_(0) {}
  // A copy is a new object: it starts without holders.
  SmartPtrObj(const SmartPtrObj&) noexcept : ref_count_(0) {}
  SmartPtrObj& operator=(const SmartPtrObj&) noexcept { return *this; }
  virtual ~SmartPtrObj();

  // The run-time type name, then " {0x", the low 32 bits of the address in
  // radix 16, and "}". Addresses that differ only above bit 31 print alike.
  virtual std::string ToString() const;

  // Current number of holders; for diagnostics only, it may change at once.
  long ref_count() const noexcept { return ref_count_; }

  // Used by SmartPtr; callers that manage counts by hand pair them exactly.
  // Both return the count they leave (Release: 0 when it deleted the object),
  // which lets COM-facing classes answer AddRef and Release from this count.
  long AddRef() const noexcept;
  long Release() const noexcept;

 protected:
  // Takes one holder away but never deletes, whatever the count; returns the
  // count it leaves. For objects whose end is decided elsewhere.
  long ReleaseWithoutDelete() const noexcept;

 private:
  mutable volatile long ref_count_;
};

// Holds one counted reference to a T (which may be const-qualified). A null
// pointer is never counted.
template <class T>
class SmartPtr {
 public:
  using element_type = T;

  SmartPtr() noexcept : p_(nullptr) {}
  SmartPtr(std::nullptr_t) noexcept : p_(nullptr) {}
  SmartPtr(T* p) noexcept : p_(p) { acquire(p_); }
  SmartPtr(const SmartPtr& other) noexcept : p_(other.p_) { acquire(p_); }
  SmartPtr(SmartPtr&& other) noexcept : p_(other.p_) { other.p_ = nullptr; }
  template <class U>
  SmartPtr(const SmartPtr<U>& other) noexcept : p_(other.get()) { acquire(p_); }
  ~SmartPtr() { release(p_); }

  // The new target is counted before the old one is released, so assigning a
  // pointer to itself never destroys the object.
  SmartPtr& operator=(T* p) noexcept {
    acquire(p);
    T* old = p_;
    p_ = p;
    release(old);
    return *this;
  }
  SmartPtr& operator=(const SmartPtr& other) noexcept { return *this = other.p_; }
  SmartPtr& operator=(SmartPtr&& other) noexcept {
    if (this != &other) {
      T* old = p_;
      p_ = other.p_;
      other.p_ = nullptr;
      release(old);
    }
    return *this;
  }
  template <class U>
  SmartPtr& operator=(const SmartPtr<U>& other) noexcept { return *this = other.get(); }

  void reset() noexcept { *this = static_cast<T*>(nullptr); }

  T* get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  operator T*() const noexcept { return p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }

  // Gives up the reference without releasing it.
  T* detach() noexcept { return std::exchange(p_, nullptr); }

 private:
  static void acquire(T* p) noexcept { if (p) p->AddRef(); }
  static void release(T* p) noexcept { if (p) p->Release(); }

  T* p_;
};

template <class T, class U>
bool operator==(const SmartPtr<T>& a, const SmartPtr<U>& b) noexcept { return a.get() == b.get(); }
template <class T, class U>
bool operator!=(const SmartPtr<T>& a, const SmartPtr<U>& b) noexcept { return a.get() != b.get(); }
template <class T, class U>
bool operator<(const SmartPtr<T>& a, const SmartPtr<U>& b) noexcept { return a.get() < b.get(); }
