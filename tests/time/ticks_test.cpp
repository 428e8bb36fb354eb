#include <qz/time/ticks.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
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
  EXPECT_TRUE(TicksAt(7) == TicksAt(7));
  EXPECT_FALSE(TicksAt(7) == TicksAt(8));
}

// A reading above the current count can only have been taken before the
// counter wrapped: the elapsed time is then nearly the whole 32-bit range.
TEST(TicksStopwatch, ElapsedIsMeasuredFromTheReadingEvenBeforeAWrap) {
  const _ticks_t earlier = TicksAt(GetTickCount() - 512);
  const unsigned long elapsed = earlier.get_elapsed_ticks();
  EXPECT_GE(elapsed, 512u);
  EXPECT_LT(elapsed, 512u + 10000u);
  EXPECT_GE(earlier.get_elapsed(), 0.512);
  EXPECT_LT(earlier.get_elapsed(), 10.512);
  const _ticks_t before_wrap = TicksAt(GetTickCount() + 0x1000u);
  EXPECT_GE(before_wrap.get_elapsed_ticks(), 0xFFFFF000ul);
  EXPECT_GE(before_wrap.get_elapsed(), 0xFFFFF000ul / 1000.0);
}

TEST(TicksStopwatch, ANewOrRestartedWatchReadsTheTickCount) {
  _ticks_t watch = TicksAt(GetTickCount() - 100000);
  watch.restart();
  EXPECT_LT(watch.get_elapsed_ticks(), 10000u);
  EXPECT_LT(static_cast<unsigned long>(_ticks_t() - watch), 10000u);  // not before the restart either
}

}  // namespace
