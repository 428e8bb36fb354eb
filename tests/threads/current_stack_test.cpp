// TThreadClass::GetCurrentStack of a thread that holds locks of the system's
// own: the walk must never suspend the thread inside them.
#include "support/loader_lock.h"
#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

using threads_test::LambdaThread;

// The walk allocates and loads the debug-help library, which needs the
// process heap's lock and the loader lock: asked while the thread holds
// them, the call waits until the thread lets them go and only then suspends
// it, instead of suspending the holder and waiting for it for ever.
TEST(ThreadClassStack, AThreadHoldingTheHeapAndLoaderLocksIsWalkedOnceItLetsGo) {
  const qz_test::LoaderLock loader = qz_test::FindLoaderLock();
  ASSERT_TRUE(loader.lock && loader.unlock);
  TEvent held, release, ask;
  LambdaThread thread([&] {
    ULONG_PTR cookie = 0;
    loader.lock(0, nullptr, &cookie);
    HeapLock(GetProcessHeap());
    held.Set();
    // Busy, not asleep: a thread asleep in the system stops only when it wakes.
    for (const DWORD start = GetTickCount(); GetTickCount() - start < 2000;) {
    }
    HeapUnlock(GetProcessHeap());
    loader.unlock(0, cookie);
    release.WaitForSignal();
  });
  std::string stack;
  // Started first: a thread starting while the loader lock is held waits.
  qz_test::WorkerThread caller([&] {
    ask.WaitForSignal();
    stack = thread.GetCurrentStack();
  });
  thread.StartThread();
  ASSERT_TRUE(held.Signaled(10000));
  ask.Set();
  const bool returned = caller.Join(60000);
  if (!returned) {
    thread.ResumeThread();  // the holder goes on, lets the heap go and frees the caller
    caller.Join(60000);
  }
  EXPECT_TRUE(returned) << "GetCurrentStack waited for a thread it had suspended";
  EXPECT_NE(stack.find("\n-> "), std::string::npos) << stack;
  EXPECT_EQ(thread.ResumeThread(), 0u) << "the thread was left suspended";
  release.Set();
}

}  // namespace
