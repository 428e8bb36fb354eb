// TThread: the owning wrapper and its operations.
#include <qz/threads/thread.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

unsigned int WaitForRelease(void* release) {
  WaitForSingleObject(static_cast<HANDLE>(release), 30000);
  return 7;
}

// DisableThreadPriorityBoost is kept as the library always had it: the flag
// is the new priority.
TEST(Thread, RunsItsEntryWithTheArgumentAndOperatesOnIt) {
  HANDLE release = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  TThread thread(&WaitForRelease, release);
  thread.DisableThreadPriorityBoost(true);
  EXPECT_EQ(GetThreadPriority(thread), 1);
  thread.DisableThreadPriorityBoost(false);
  EXPECT_EQ(GetThreadPriority(thread), 0);
  SetEvent(release);
  ASSERT_EQ(thread.WaitForSingleObject(10000, FALSE), WAIT_OBJECT_0);
  DWORD exit_code = 0;
  GetExitCodeThread(thread, &exit_code);
  EXPECT_EQ(exit_code, 7u);
  CloseHandle(release);
}

}  // namespace
