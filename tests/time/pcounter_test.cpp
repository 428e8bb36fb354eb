#include <qz/time/pcounter.h>

#include <gtest/gtest.h>

namespace {

// Seconds are ticks over the frequency read at load.
TEST(PerformanceCounter, ConsecutiveLapsAddUpToTheWholeAndSecondsFollowTheTicks) {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  EXPECT_EQ(_PerformanceCounterFrequency.QuadPart, frequency.QuadPart);
  EXPECT_EQ(_pcounter_t::frequency, static_cast<double>(frequency.QuadPart));
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
  EXPECT_GT(second, 0);
  EXPECT_EQ(static_cast<__int64>(watch) - static_cast<__int64>(start), first + second);

  const _pcounter_t lap_start = watch;
  const double lap = watch.get_elapsed_restart();
  EXPECT_DOUBLE_EQ(lap, (static_cast<__int64>(watch) - static_cast<__int64>(lap_start)) /
                            _pcounter_t::frequency);
}

}  // namespace
