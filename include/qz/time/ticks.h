// _ticks_t: a stopwatch on the system tick count (GetTickCount, ms).
//
//   _ticks_t started;
//   ...
//   if (started.get_elapsed_ticks() > 5000) ...   // more than 5 s
//
// Differences are taken in unsigned 32-bit arithmetic, so one wrap of the
// tick count (every 49.7 days) is absorbed; two are not detectable. operator<
// compares the raw readings and deliberately ignores wrapping.
//
// Thread safety: a plain value; one object is used by one thread at a time.
#pragma once

#include <qz/export.h>
#include <qz/os/do_not_initialize.h>

class QZ_API _ticks_t {
 public:
  // Reads the tick count now.
  _ticks_t() noexcept;
  // Leaves the reading undefined until restart() or an assignment.
  explicit _ticks_t(_DoNotInitialize) noexcept {}

  void restart() noexcept;
  // Milliseconds since the reading.
  unsigned long get_elapsed_ticks() const noexcept;
  // Seconds since the reading.
  double get_elapsed() const noexcept;

  bool operator==(const _ticks_t& other) const noexcept { return ticks == other.ticks; }
  bool operator<(const _ticks_t& other) const noexcept { return ticks < other.ticks; }
  // This reading minus the other in 32-bit arithmetic: right across one wrap
  // while the distance stays below 2^31 ms.
  int operator-(const _ticks_t& other) const noexcept {
    return static_cast<int>(ticks - other.ticks);
  }

 private:
  unsigned long ticks;
};
