// _pcounter_t: a stopwatch on the high-resolution performance counter.
//
//   _pcounter_t watch;
//   for (...) {
//     work();
//     double seconds = watch.get_elapsed_restart();   // one lap, none lost
//   }
//
// _PerformanceCounterFrequency and _pcounter_t::frequency (the same number
// as a double) are read once while qz.dll loads, so get_elapsed costs one
// counter read and one division.
//
// Thread safety: the statics are constant after loading. A stopwatch is a
// plain value used by one thread at a time.
#pragma once

#include <qz/export.h>
#include <qz/os/do_not_initialize.h>

#include <windows.h>

// Counter ticks per second, as QueryPerformanceFrequency reports it.
extern QZ_API LARGE_INTEGER _PerformanceCounterFrequency;

class QZ_API _pcounter_t {
 public:
  // _PerformanceCounterFrequency as a double.
  static const double frequency;

  // Reads the counter now.
  _pcounter_t() noexcept;
  // Leaves the reading undefined until restart() or an assignment.
  explicit _pcounter_t(_DoNotInitialize) noexcept {}

  void restart() noexcept;
  // Counter ticks since the reading.
  __int64 get_elapsed_ticks() const noexcept;
  // Seconds since the reading.
  double get_elapsed() const noexcept;
  // As above, and the same counter reading becomes the new start, so that
  // consecutive laps add up exactly to the whole.
  __int64 get_elapsed_ticks_and_restart() noexcept;
  double get_elapsed_restart() noexcept;

  // The reading itself.
  operator __int64() const noexcept { return counter; }

 private:
  __int64 counter;
};
