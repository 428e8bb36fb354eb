// TThreadClass: the start sequence, interruption at every kind of wait, the
// bounded stop and destruction, and the runaway lines.
#include <qz/errors/exceptions.h>
#include <qz/errors/tuning.h>

#include "support/scoped_setting.h"
#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace {

using qz_test::CapturedStream;
using threads_test::InterruptWhileWaiting;
using threads_test::LambdaThread;

// The lock waits are in interrupted_locks_test.cpp.
TEST(ThreadInterruption, EndsABodyInAnEndlessSleepOrPauseLoopWithoutTermination) {
  InterruptWhileWaiting([] { TThread::Sleep(INFINITE, 1); });
  InterruptWhileWaiting([] { for (;;) TThread::Pause(); });
}

TEST(ThreadInterruption, BeforeTheBodyRunsMeansItNeverRuns) {
  std::atomic<bool> ran{false};
  LambdaThread thread([&] { ran = true; });
  thread.InterruptThread(0, 1000);
  EXPECT_EQ(thread.state(), 2);
  thread.StartThread();
  ASSERT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
  EXPECT_FALSE(ran);
  EXPECT_EQ(thread.state(), 2);
}

// A body that never waits alertably is beyond reach: the stop time-out
// ends it by termination, and the object can start again; interrupting
// the ended thread then changes nothing.
TEST(ThreadInterruption, TerminatesABodyThatNeverWaits) {
  std::atomic<bool> spin{true};
  LambdaThread thread([&] { while (spin) YieldProcessor(); });
  thread.StartThread();
  ASSERT_TRUE(thread.started.Signaled(10000));
  const DWORD start = GetTickCount();
  thread.InterruptThread(0, 300);
  EXPECT_GE(GetTickCount() - start, 250u);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
  EXPECT_EQ(thread.state(), 0);
  spin = false;
  thread.StartThread();
  ASSERT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
  thread.InterruptThread(1000, 1000);
  EXPECT_TRUE(thread.returned);
  EXPECT_EQ(thread.state(), 0);
}

// The body touches nothing of the derived object, and the test waits until
// it runs: a body not yet called when the derived object goes would be a
// call of a pure virtual function.
std::atomic<bool> g_spin_forever{true};
std::atomic<bool> g_spinning{false};

class Spinner : public TThreadClass {
 public:
  void Execute() override {
    g_spinning = true;
    while (g_spin_forever) YieldProcessor();
  }
};

TEST(ThreadClass, DestroyingARunningThreadIsBoundedAt1000Ms) {
  HANDLE thread = nullptr;
  DWORD start = 0;
  {
    Spinner spinner;
    spinner.StartThread();
    thread = THandle(static_cast<void*>(spinner)).DetachHandle();
    ASSERT_TRUE(qz_test::Eventually([] { return g_spinning.load(); }));
    start = GetTickCount();
  }
  const DWORD spent = GetTickCount() - start;
  EXPECT_GE(spent, 900u);
  EXPECT_LT(spent, 5000u);
  EXPECT_EQ(WaitForSingleObject(thread, 5000), WAIT_OBJECT_0);
  CloseHandle(thread);
}

// The body that runs away, and the line it leaves.
TEST(ThreadClass, LogsRunawaysByteForByteAndReportsThem) {
  const std::pair<std::function<void()>, std::string> cases[] = {
      {[] { throw std::runtime_error("disk full"); },
       "(!) Thread runaway with exception std::runtime_error:disk full\n"},
      {[] { throw std::logic_error("first\nsecond"); },
       "(!) Thread runaway with exception std::logic_error:\nfirst\nsecond\n"},
      {[] { throw 42; }, "(!) Thread runaway with unknown exception\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.second);
    CapturedStream debug(Debug);
    LambdaThread thread(c.first);
    thread.StartThread();
    ASSERT_EQ(WaitForSingleObject(thread, 10000), WAIT_OBJECT_0);
    EXPECT_EQ(debug.text(), c.second);
    EXPECT_EQ(thread.exceptions_reported, 1);
    EXPECT_EQ(thread.state(), 0);
  }
}

int (*volatile g_read)(const int*) = [](const int* p) { return *p; };

TEST(ThreadClass, AProcessorFaultInTheBodyIsARunaway) {
  // A dump costs seconds and is not what this test is about.
  qz_test::ScopedSetting<bool> no_dump(SaveMiniDumpOnStructuredException, false);
  CapturedStream debug(Debug);
  LambdaThread thread([] { g_read(reinterpret_cast<const int*>(0x10)); });
  thread.StartThread();
  ASSERT_EQ(WaitForSingleObject(thread, 30000), WAIT_OBJECT_0);
  EXPECT_EQ(debug.text().rfind("(!) Thread runaway with exception EStructuredException:", 0), 0u) << debug.text();
  EXPECT_NE(debug.text().find("Access Violation (read from 0x10)"), std::string::npos);
  EXPECT_EQ(thread.exceptions_reported, 1);
}

TEST(ThreadClass, GetCurrentStackOfAnotherThreadAndNoSecondStart) {
  TEvent release;
  LambdaThread thread([&] { release.WaitForSignal(); });
  thread.StartThread();
  ASSERT_TRUE(thread.started.Signaled(10000));
  EXPECT_THROW(thread.StartThread(), EGeneric);
  const std::string stack = thread.GetCurrentStack();
  EXPECT_NE(stack.find("\n-> "), std::string::npos) << stack;
  EXPECT_EQ(thread.ResumeThread(), 0u) << "the thread was left suspended";
  release.Set();
}

}  // namespace
