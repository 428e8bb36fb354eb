// Stopwatches on the CPU time the calling thread has used, in 100 ns units:
//
//   _thread_kernel_times_t   time spent in kernel mode
//   _thread_user_times_t     time spent in user mode
//   _thread_times_t          both (the sum)
//
// Every reading is of the thread that makes it: a stopwatch started on one
// thread and read on another subtracts two different threads' times. The
// system updates these times at its scheduler's granularity, so short spans
// may read as 0.
//
// Thread safety: the statics are constant after loading (dummy_time is a
// write-only scratch target shared by all readings). A stopwatch is a plain
// value used by one thread at a time.
#pragma once

#include <qz/export.h>
#include <qz/os/do_not_initialize.h>

#include <windows.h>

class QZ_API _thread_common_times_t {
 public:
  // 100 ns units per second.
  static const double frequency;
  // GetCurrentThread()'s pseudo-handle: always the calling thread.
  static const HANDLE current_thread;
  // Receives the outputs of GetThreadTimes a stopwatch does not keep.
  static FILETIME dummy_time;
};

class QZ_API _thread_kernel_times_t : public _thread_common_times_t {
 public:
  _thread_kernel_times_t() noexcept;
  explicit _thread_kernel_times_t(_DoNotInitialize) noexcept {}

  void restart() noexcept;
  __int64 get_elapsed_ticks() const noexcept;
  double get_elapsed() const noexcept;
  operator __int64() const noexcept { return kernel; }

 private:
  __int64 kernel;
};

class QZ_API _thread_user_times_t : public _thread_common_times_t {
 public:
  _thread_user_times_t() noexcept;
  explicit _thread_user_times_t(_DoNotInitialize) noexcept {}

  void restart() noexcept;
  __int64 get_elapsed_ticks() const noexcept;
  double get_elapsed() const noexcept;
  operator __int64() const noexcept { return user; }

 private:
  __int64 user;
};

class QZ_API _thread_times_t : public _thread_common_times_t {
 public:
  _thread_times_t() noexcept;
  explicit _thread_times_t(_DoNotInitialize) noexcept {}

  void restart() noexcept;
  // Kernel plus user time since the reading.
  __int64 get_elapsed_ticks() const noexcept;
  double get_elapsed() const noexcept;
  // Kernel plus user time of the reading.
  operator __int64() const noexcept { return kernel + user; }

 private:
  __int64 kernel;
  __int64 user;
};
