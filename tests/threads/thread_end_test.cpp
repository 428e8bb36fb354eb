// Library threads that end while other threads allocate leave the heap
// whole. Every library thread translates faults, and a thread's translation
// state is freed when the thread ends; freed at the wrong moment (by a
// thread_local object's destructor, which this runtime runs after it freed
// the storage), it broke the heap or left its lock held by a thread that was
// gone, and the process crashed or hung within a few hundred thread ends.
//
// The rounds run in a child process, since the fault hangs the process.
#include <qz/threads/thread_class.h>

#include "threads/threads_test_support.h"

#include <windows.h>

#include <string>

namespace {

using threads_test::RunChild;

bool HeapsAreWhole() {
  HANDLE heaps[64];
  const DWORD count = GetProcessHeaps(64, heaps);
  for (DWORD i = 0; i < count && i < 64; ++i)
    if (!HeapValidate(heaps[i], 0, nullptr)) return false;
  return true;
}

// Allocates and frees, sleeping alertably between rounds; ends by itself
// after `rounds`, or when interrupted.
class Allocator : public TThreadClass {
 public:
  explicit Allocator(int rounds) : rounds_(rounds) {}
  ~Allocator() override { InterruptThread(0, 5000); }
  void Execute() override {
    for (int round = 0; round != rounds_; ++round) {
      for (int i = 0; i < 50; ++i) delete new std::string(100, 'x');
      TThread::Sleep(0, 1);
    }
  }

 private:
  const int rounds_;
};

TEST(ThreadEnd, ThreadsEndingWhileOthersAllocateLeaveTheHeapWhole) {
  ASSERT_EQ(RunChild("ThreadEnd.DISABLED_EndWhileAllocating", 90000), 0);
}

// The child: two thousand rounds of three threads, one ending by itself and
// two interrupted.
TEST(ThreadEnd, DISABLED_EndWhileAllocating) {
  for (int round = 0; round < 2000; ++round) {
    {
      Allocator ending(20), interrupted(-1), also_interrupted(-1);
      ending.StartThread();
      interrupted.StartThread();
      also_interrupted.StartThread();
      Sleep(1);
    }
    ASSERT_TRUE(HeapsAreWhole()) << "round " << round;
  }
  EXPECT_TRUE(HeapsAreWhole());
}

}  // namespace
