#include <qz/sync/event.h>
#include <qz/sync/waitable_timer.h>

#include "support/error_code.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

namespace {

using qz_test::UniqueName;

bool Fires(const TWaitableTimer& timer, DWORD ms = 10000) {
  return timer.WaitForSingleObject(ms, FALSE) == WAIT_OBJECT_0;
}

// The time left until a timer is due, in 100 ns units, as the system's native
// query reports it.
__int64 RemainingTime(HANDLE timer) {
  struct BasicInformation {
    LARGE_INTEGER remaining;
    BOOLEAN signalled;
  } information{};
  using Query = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<Query>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryTimer")));
  EXPECT_NE(query, nullptr);
  if (query == nullptr) return 0;
  EXPECT_EQ(query(timer, 0, &information, sizeof information, nullptr), 0);
  return information.remaining.QuadPart;
}

TEST(TWaitableTimer, RelativeDueTimeIsInMillisecondsWithoutOverflow) {
  for (const unsigned long ms : {1500ul, 4000000000ul}) {  // the second about 46 days
    TWaitableTimer timer;
    timer.SetTimer(ms, 0);
    const __int64 expected = static_cast<__int64>(ms) * 10000, remaining = RemainingTime(timer);
    EXPECT_LE(remaining, expected);
    EXPECT_GT(remaining, expected - 5000000);
    timer.Cancel();
  }
}

TEST(TWaitableTimer, PeriodicTimerFiresAtOnceAndRepeats) {
  TWaitableTimer timer(false);  // auto reset: one wait per period
  timer.SetTimer(0, 100);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(Fires(timer)) << i;
  timer.Cancel();
}

TEST(TWaitableTimer, AbsoluteDueTimeFiresAndCancelledTimerDoesNot) {
  TWaitableTimer timer;
  ULARGE_INTEGER due;
  GetSystemTimeAsFileTime(reinterpret_cast<FILETIME*>(&due));
  due.QuadPart += 500000;  // 50 ms
  timer.SetTimer(FILETIME{due.LowPart, due.HighPart});
  EXPECT_TRUE(Fires(timer));
  EXPECT_TRUE(Fires(timer, 0));  // manual reset: stays signalled
  timer.SetTimer(300, 0);
  timer.Cancel();
  EXPECT_FALSE(Fires(timer, 600));  // setting it again reset it; cancelled, it does not fire
}

TEST(TWaitableTimer, NamedTimerIsOpenedByName) {
  const std::wstring name = UniqueName(L"timer");
  const std::string narrow(name.begin(), name.end());
  TWaitableTimer named(narrow.c_str(), true);
  TWaitableTimer opened(DoNotInitialize);
  opened.OpenTimer(name.c_str(), TIMER_ALL_ACCESS);
  opened.SetTimer(0, 0);
  EXPECT_TRUE(Fires(named));
}

// Create and open report nothing when the system answers with the null
// handle; the first use does.
TEST(TWaitableTimer, FailedCreateOrOpenShowsOnlyAtFirstUse) {
  const std::wstring taken = UniqueName(L"taken");
  TEvent event(taken.c_str(), true, false);
  TWaitableTimer clash(taken.c_str(), true);
  EXPECT_EQ(static_cast<void*>(clash), nullptr);
  EXPECT_EQ(qz_test::CodeThrownBy([&] { clash.SetTimer(10, 0); }), ERROR_INVALID_HANDLE);

  TWaitableTimer missing(DoNotInitialize);
  missing.OpenTimer(UniqueName(L"missing").c_str(), TIMER_ALL_ACCESS);
  EXPECT_EQ(static_cast<void*>(missing), nullptr);
  EXPECT_THROW(missing.Cancel(), ESystemException);
}

}  // namespace
