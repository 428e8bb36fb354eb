// The stopwatches: tick count, performance counter and thread times.
#include <qz/time/pcounter.h>
#include <qz/time/thread_times.h>
#include <qz/time/ticks.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <type_traits>

namespace {

// A stopwatch whose reading is `raw`, as if taken when the tick count was
// `raw`.
_ticks_t TicksAt(unsigned long raw) {
  static_assert(sizeof(_ticks_t) == sizeof(unsigned long) && std::is_trivially_copyable<_ticks_t>::value,
                "the reading is the object");
  _ticks_t ticks(DoNotInitialize);
  std::memcpy(static_cast<void*>(&ticks), &raw, sizeof raw);
  return ticks;
}

// Differences are right across the wrap; the order compares raw readings.
TEST(TicksStopwatch, DifferenceAcrossTheWrapIsRightButOrderIgnoresIt) {
  const _ticks_t before_wrap = TicksAt(0xFFFFFF00ul);  // 256 below the wrap
  const _ticks_t after_wrap = TicksAt(0x100ul);        // 256 after it
  EXPECT_EQ(after_wrap - before_wrap, 512);
  EXPECT_EQ(before_wrap - after_wrap, -512);
  EXPECT_FALSE(before_wrap < after_wrap);  // although it is earlier
  EXPECT_TRUE(after_wrap < before_wrap);
}

// A reading above the current count can only have been taken before the
// counter wrapped: the elapsed time is then nearly the whole 32-bit range.
TEST(TicksStopwatch, ElapsedIsMeasuredFromTheReadingEvenBeforeAWrapOrARestart) {
  const _ticks_t earlier = TicksAt(GetTickCount() - 512);
  const unsigned long elapsed = earlier.get_elapsed_ticks();
  EXPECT_GE(elapsed, 512u);
  EXPECT_LT(elapsed, 512u + 10000u);
  const _ticks_t before_wrap = TicksAt(GetTickCount() + 0x1000u);
  EXPECT_GE(before_wrap.get_elapsed_ticks(), 0xFFFFF000ul);
  EXPECT_GE(before_wrap.get_elapsed(), 0xFFFFF000ul / 1000.0);
}

// Seconds are ticks over the frequency read at load.
TEST(PerformanceCounter, ConsecutiveLapsAddUpToTheWholeAndSecondsFollowTheTicks) {
  _pcounter_t watch;
  const _pcounter_t start = watch;
  Sleep(2);
  const __int64 first = watch.get_elapsed_ticks_and_restart();
  Sleep(20);
  const double seconds = watch.get_elapsed();
  EXPECT_GE(seconds, 0.015);
  EXPECT_LT(seconds, 30.0);
  EXPECT_LE(seconds, watch.get_elapsed_ticks() / _pcounter_t::frequency);
  const __int64 second = watch.get_elapsed_ticks_and_restart();
  EXPECT_GT(first, 0);
  EXPECT_EQ(static_cast<__int64>(watch) - static_cast<__int64>(start), first + second);
}

// Keeps the calling thread busy in user mode until `watch` has seen at least
// `seconds` of CPU time, or 20 s of wall time have passed.
template <class Watch>
bool SpinUntil(const Watch& watch, double seconds) {
  const DWORD start = GetTickCount();
  volatile unsigned long sink = 0;
  while (watch.get_elapsed() < seconds) {
    for (int i = 0; i < 100000; ++i) sink = sink + i;
    if (GetTickCount() - start > 20000) return false;
  }
  return true;
}

// Run on a thread of its own: a reading of the thread that loaded the
// library (idle in join meanwhile) would never grow. Ticks are 100 ns.
TEST(ThreadTimes, ReadingsAreOfTheCallingThreadInHundredNanosecondTicks) {
  bool user_grew = false, total_grew = false;
  __int64 ticks = 0;
  std::thread([&] {
    _thread_user_times_t user;
    user_grew = SpinUntil(user, 0.05);
    _thread_times_t total;
    total_grew = SpinUntil(total, 0.05);
    ticks = total.get_elapsed_ticks();
  }).join();
  EXPECT_TRUE(user_grew);
  EXPECT_TRUE(total_grew);
  EXPECT_GE(ticks, 500000);
}

}  // namespace
