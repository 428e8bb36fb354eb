// Threads interrupted while they allocate and free leave the heap whole.
//
// Known fault, kept disabled until it is fixed: under Wine (seen with the
// unoptimised build, where it shows within a few hundred rounds) an
// interruption thrown from a procedure call ends up leaving a heap's lock
// owned by a thread that has unwound out of, or died inside, the heap code.
// The next allocation on another thread then waits for ever, or the heap's
// free lists are found broken. Waits that cannot run procedure calls
// (WaitOnAddress, a contended critical section) do not run them here, so the
// way in is still to be found. The pool soak hits the same fault (workers
// interrupted by Shutdown after heap-heavy jobs).
//
// Run it with --gtest_also_run_disabled_tests; each round runs in a child
// process, since the fault hangs the process.
#include <qz/threads/thread_class.h>

#include "threads/threads_test_support.h"

#include <windows.h>

#include <string>

namespace {

using threads_test::RunChild;

// Every heap of the process passes the system's own check.
bool HeapsAreWhole() {
  HANDLE heaps[64];
  const DWORD count = GetProcessHeaps(64, heaps);
  for (DWORD i = 0; i < count && i < 64; ++i)
    if (!HeapValidate(heaps[i], 0, nullptr)) return false;
  return true;
}

// Allocates and frees without end, sleeping alertably between rounds.
class Churner : public TThreadClass {
 public:
  ~Churner() override { InterruptThread(0, 5000); }
  void Execute() override {
    for (;;) {
      for (int i = 0; i < 50; ++i) delete new std::string(100, 'x');
      TThread::Sleep(0, 1);
    }
  }
};

TEST(InterruptedHeapWork, DISABLED_InterruptedAllocatorsLeaveTheHeapWhole) {
  for (int round = 0; round < 5; ++round)
    ASSERT_EQ(RunChild("InterruptedHeapWork.DISABLED_Churn", 120000), 0) << "round " << round;
}

// The child: a thousand pairs of churning threads, each interrupted; a
// broken heap fails the check, a stranded heap lock hangs the child.
TEST(InterruptedHeapWork, DISABLED_Churn) {
  ASSERT_TRUE(HeapsAreWhole());
  for (int round = 0; round < 1000; ++round) {
    {
      Churner first, second;
      first.StartThread();
      second.StartThread();
      Sleep(1);
    }
    ASSERT_TRUE(HeapsAreWhole()) << "round " << round;
  }
}

}  // namespace
