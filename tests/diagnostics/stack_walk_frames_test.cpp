// The walk on the system's unwinder against the debug-help walker: for the
// same context both must give exactly the same frames.
#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>
#include <qz/threads/thread_class.h>

#include "diagnostics/debug_info/unwind_walk.h"
#include "diagnostics/diagnostics_test_support.h"
#include "support/scoped_setting.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using frame_list = std::vector<unsigned long long>;

frame_list walk_with(symbol_sources sources, CONTEXT context, HANDLE thread, unsigned int skip = 0,
                     unsigned int max = 64) {
  qz_test::ScopedSetting<symbol_sources> setting(SymbolSources, sources);
  unsigned long long frames[64] = {};
  const unsigned int count = StackWalk(frames, &context, thread, skip, max);
  return frame_list(frames, frames + count);
}

// Both walks of `context`, whole and cut by skip and max.
void expect_same_walks(const CONTEXT& context, HANDLE thread) {
  const frame_list reference = walk_with(symbol_sources::debug_help_only, context, thread);
  ASSERT_GE(reference.size(), 3u);
  EXPECT_EQ(walk_with(symbol_sources::debug_help_first, context, thread), reference);
  EXPECT_EQ(walk_with(symbol_sources::own_reader_first, context, thread, 2, 3),
            walk_with(symbol_sources::debug_help_only, context, thread, 2, 3));
}

using diagnostics_test::descend;
using diagnostics_test::sink;

class StackWalkFrames : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(SymInitialize()); }
  static void TearDownTestSuite() { SymCleanup(); }
};

TEST_F(StackWalkFrames, DeepStacksOfThisThreadAndThroughTheLibrary) {
  for (int depth : {0, 7, 40}) {
    descend(depth, [] {
      CONTEXT context;
      RtlCaptureContext(&context);
      expect_same_walks(context, GetCurrentThread());
    });
  }

  // A thread the library started: its stack begins in qz.dll.
  struct walker : TThreadClass {
    void Execute() override {
      descend(12, [this] {
        CONTEXT context;
        RtlCaptureContext(&context);
        reference = walk_with(symbol_sources::debug_help_only, context, GetCurrentThread());
        fast = walk_with(symbol_sources::debug_help_first, context, GetCurrentThread());
      });
    }
    frame_list reference, fast;
  } thread;
  thread.StartThread();
  thread.StopThread(30000);
  EXPECT_GE(thread.reference.size(), 15u);
  EXPECT_EQ(thread.fast, thread.reference);
}

// The speed of StackWalk rests on the system's unwinder reaching the end of
// an ordinary stack by itself, the thread's start included.
TEST_F(StackWalkFrames, TheSystemUnwinderAloneReachesTheEndOfAnOrdinaryStack) {
  descend(6, [] {
    CONTEXT context;
    RtlCaptureContext(&context);
    const frame_list reference = walk_with(symbol_sources::debug_help_only, context, GetCurrentThread());
    unsigned long long frames[64] = {};
    CONTEXT copy = context;
    const debug_info::unwind_walk_result walk = debug_info::unwind_walk(copy, frames, 0, 64);
    EXPECT_TRUE(walk.reached_end);
    EXPECT_EQ(frame_list(frames, frames + walk.stored), reference);
  });
}

// A stack smashed by the fault being reported: the walk must come back with
// the debug-help walker's frames, never fault itself.
TEST_F(StackWalkFrames, ACorruptStackGivesTheDebugHelpWalkersFrames) {
  std::mt19937_64 random(23);
  descend(3, [&] {
    CONTEXT context;
    RtlCaptureContext(&context);
    volatile DWORD64 smashed[64];
    for (int round = 0; round < 20; ++round) {
      for (auto& word : smashed) word = random() >> (round % 2 ? 0 : 20);  // wild and near
      CONTEXT bad = context;
      bad.Rsp = reinterpret_cast<DWORD64>(&smashed[0]);
      bad.Rbp = random();
      if (round % 3 == 0) bad.Rsp = random();  // in no stack at all
      const frame_list reference = walk_with(symbol_sources::debug_help_only, bad, GetCurrentThread());
      EXPECT_EQ(walk_with(symbol_sources::debug_help_first, bad, GetCurrentThread()), reference)
          << "round " << round;
    }
  });
}

// Walks from the faulting context, inside the first vectored handler, while
// the faulting stack is still whole.
frame_list fault_reference, fault_fast;
LONG CALLBACK walk_at_fault(EXCEPTION_POINTERS* pointers) {
  if (pointers->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION &&
      fault_reference.empty()) {
    fault_reference = walk_with(symbol_sources::debug_help_only, *pointers->ContextRecord,
                                GetCurrentThread());
    fault_fast = walk_with(symbol_sources::debug_help_first, *pointers->ContextRecord,
                           GetCurrentThread());
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

__attribute__((noinline)) int read_at(ULONG_PTR address) {
  return *reinterpret_cast<volatile int*>(address);
}
int (*volatile reader)(ULONG_PTR) = &read_at;

TEST_F(StackWalkFrames, FromAFaultContext) {
  qz_test::ScopedSetting<bool> no_dump(SaveMiniDumpOnStructuredException, false);
  temporary_redirect_structured_exceptions translate;
  void* handler = AddVectoredExceptionHandler(1, &walk_at_fault);
  ASSERT_NE(handler, nullptr);
  descend(9, [] {
    try {
      sink = reader(0x10);
    } catch (const EStructuredException&) {
    }
  });
  RemoveVectoredExceptionHandler(handler);
  ASSERT_GE(fault_reference.size(), 12u);
  EXPECT_EQ(fault_fast, fault_reference);
}

struct blocked_thread {
  HANDLE release = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  static DWORD WINAPI body(void* self) {
    auto* blocked = static_cast<blocked_thread*>(self);
    descend(15, [blocked] {
      SetEvent(blocked->ready);
      WaitForSingleObject(blocked->release, INFINITE);
    });
    return 0;
  }
};

TEST_F(StackWalkFrames, OfASuspendedThread) {
  blocked_thread blocked;
  HANDLE thread = CreateThread(nullptr, 0, &blocked_thread::body, &blocked, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  WaitForSingleObject(blocked.ready, INFINITE);
  Sleep(20);  // into the wait
  ASSERT_NE(SuspendThread(thread), static_cast<DWORD>(-1));
  CONTEXT context = {};
  context.ContextFlags = CONTEXT_FULL;
  ASSERT_TRUE(GetThreadContext(thread, &context));
  expect_same_walks(context, thread);
  ResumeThread(thread);
  SetEvent(blocked.release);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  CloseHandle(blocked.ready);
  CloseHandle(blocked.release);
}

}  // namespace
