// TThread: the owning wrapper and its operations.
#include <qz/threads/thread.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>

namespace {

unsigned int WaitForRelease(void* release) {
  WaitForSingleObject(static_cast<HANDLE>(release), 30000);
  return 7;
}

void Count(unsigned long long counter) { ++*reinterpret_cast<std::atomic<int>*>(counter); }

// DisableThreadPriorityBoost is kept as the library always had it: the flag
// is the new priority. Calls queued to a thread run in an alertable sleep only.
TEST(Thread, RunsItsEntryWithTheArgumentOperatesOnItAndQueuesCalls) {
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
  TThread self(DoNotInitialize);
  self.AttachHandle(OpenThread(THREAD_ALL_ACCESS, FALSE, GetCurrentThreadId()));
  std::atomic<int> calls{0};
  self.QueueUserAPC(&Count, reinterpret_cast<unsigned long long>(&calls));
  TThread::Sleep(1, 0);
  EXPECT_EQ(calls, 0);
  TThread::Pause();
  EXPECT_EQ(calls, 1);
}

}  // namespace
