#include <qz/time/thread_times.h>

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace {

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

TEST(ThreadTimes, TotalIsKernelPlusUser) {
  _thread_user_times_t user;
  SpinUntil(user, 0.02);  // make both readings non-trivial
  _thread_times_t total;
  __int64 parts[2];
  static_assert(sizeof total == sizeof parts, "kernel, then user");
  std::memcpy(parts, static_cast<const void*>(&total), sizeof parts);
  EXPECT_EQ(static_cast<__int64>(total), parts[0] + parts[1]);
  EXPECT_GT(parts[1], 0);
}

}  // namespace
