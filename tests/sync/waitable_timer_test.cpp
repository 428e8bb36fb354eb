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

// An absolute due time fires; a named timer is opened by name; setting a
// timer again resets it and a cancelled one does not fire.
TEST(TWaitableTimer, AbsoluteDueTimeFiresByNameAndCancelledTimerDoesNot) {
  const std::wstring name = UniqueName(L"timer");
  const std::string narrow(name.begin(), name.end());
  TWaitableTimer timer(narrow.c_str(), true);
  TWaitableTimer opened(DoNotInitialize);
  opened.OpenTimer(name.c_str(), TIMER_ALL_ACCESS);
  ULARGE_INTEGER due;
  GetSystemTimeAsFileTime(reinterpret_cast<FILETIME*>(&due));
  due.QuadPart += 500000;  // 50 ms
  opened.SetTimer(FILETIME{due.LowPart, due.HighPart});
  EXPECT_TRUE(Fires(timer));
  timer.SetTimer(300, 0);
  timer.Cancel();
  EXPECT_FALSE(Fires(timer, 600));
}

// Create and open report nothing when the system answers with the null
// handle; the first use does.
TEST(TWaitableTimer, FailedCreateShowsOnlyAtFirstUse) {
  const std::wstring taken = UniqueName(L"taken");
  TEvent event(taken.c_str(), true, false);
  TWaitableTimer clash(taken.c_str(), true);
  EXPECT_EQ(static_cast<void*>(clash), nullptr);
  EXPECT_EQ(qz_test::CodeThrownBy([&] { clash.SetTimer(10, 0); }), ERROR_INVALID_HANDLE);
}

}  // namespace
