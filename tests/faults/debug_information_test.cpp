// What a thrown or built exception learns of where it came from, stacks and
// the snapshot of every thread.
#include <qz/errors/exceptions.h>
#include <qz/diagnostics/symbols.h>
#include <qz/errors/tuning.h>

#include "support/errors_test_support.h"
#include "support/scoped_setting.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using errors_test::NamesOf;
using errors_test::StartsWith;
using errors_test::TextOf;
using qz_test::ScopedSetting;

// The first "\n-> " line of a stack text, without the arrow.
std::string first_frame(const std::string& stack) {
  if (!StartsWith(stack, "\n-> ")) return "<no frame>";
  return stack.substr(4, stack.find('\n', 4) - 4);
}

// A test body's frame: test names are long, so the name comes shortened.
bool is_test_body(const std::string& frame) {
  return frame.find("_Test::TestBody+") != std::string::npos &&
         frame.find("[debug_information_test.cpp#") != std::string::npos;
}

// Dumps stay off unless a test is about them.
class DebugInformationTest : public errors_test::SymbolEngineTest {
 protected:
  ScopedSetting<bool> no_structured_dumps_{SaveMiniDumpOnStructuredException, false};
  ScopedSetting<bool> no_thrown_dumps_{SaveMiniDumpOnCppException, false};
};

__attribute__((noinline)) void throw_extended() {
  throw EGeneric(true);
}

TEST_F(DebugInformationTest, AThrownEGenericNamesTheFunctionThatBuiltItOnlyWhenAsked) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  try {
    throw_extended();
    FAIL();
  } catch (const EGeneric& e) {
    EXPECT_EQ(NamesOf(e), "ModuleName,AddressName,Stack,");
    EXPECT_EQ(TextOf(e, "ModuleName"), "qz_faults_tests");
    const std::string name = TextOf(e, "AddressName");
    EXPECT_TRUE(StartsWith(name, "throw_extended+")) << name;
    EXPECT_NE(name.find("[debug_information_test.cpp#"), std::string::npos);
    EXPECT_TRUE(StartsWith(TextOf(e, "Stack"), "\n-> " + name + "\n-> ")) << TextOf(e, "Stack");
  }
  ScopedSetting<bool> plain(ExtendDebugInformationFromException, false);
  EXPECT_TRUE(EGeneric(true).values().empty());
}

// While the handler is not at work (UseVEH false) nothing adds the location
// at the throw, so EGeneric(true) adds it itself, from the code that built it.
TEST_F(DebugInformationTest, WithUseVEHFalseEGenericTrueTakesTheLocationItself) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  ScopedSetting<bool> handler_off(UseVEH, false);
  try {
    throw_extended();
    FAIL();
  } catch (const EGeneric& e) {
    EXPECT_EQ(NamesOf(e), "ModuleName,AddressName,Stack,");
    EXPECT_TRUE(StartsWith(TextOf(e, "AddressName"), "throw_extended+")) << TextOf(e, "AddressName");
  }
}

__attribute__((noinline)) void ThrowFromDeepInside() { throw EGeneric({"Text", "deep"}); }
void (*volatile throw_from_deep_inside)() = &ThrowFromDeepInside;

// Caught in a caller of its own: what the exception carries is of the throw.
__attribute__((noinline)) EGeneric CaughtFarAway() {
  try {
    throw_from_deep_inside();
  } catch (const EGeneric& e) {
    return e;
  }
  return EGeneric();
}

TEST_F(DebugInformationTest, TheHandlerGivesAThrownEGenericTheLocationAndStackOfItsThrowWhileUseVEHIsSet) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  {
    const EGeneric e = CaughtFarAway();
    EXPECT_EQ(TextOf(e, "ModuleName"), "qz_faults_tests");
    EXPECT_TRUE(StartsWith(TextOf(e, "AddressName"), "ThrowFromDeepInside+")) << TextOf(e, "AddressName");
    const std::string stack = TextOf(e, "Stack");
    EXPECT_TRUE(StartsWith(stack, "\n-> ThrowFromDeepInside+")) << stack;
    EXPECT_NE(stack.find("\n-> CaughtFarAway+"), std::string::npos) << stack;
    EXPECT_EQ(e.values().back().first, "Stack");
  }
  ScopedSetting<bool> handler_off(UseVEH, false);
  const EGeneric e = CaughtFarAway();
  EXPECT_EQ(TextOf(e, "Stack") + TextOf(e, "ModuleName") + TextOf(e, "AddressName"), "<none><none><none>");
}

// An object whose text cannot be had: reading it throws.
struct Unprintable : SmartPtrObj {
  std::string ToString() const override { throw std::runtime_error("no text"); }
};

TEST_F(DebugInformationTest, TheHandlerSwallowsItsOwnErrorsAndLeavesTheExceptionAsItWas) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  try {  // the handler's look at "Stack" throws inside the handler itself
    throw EGeneric({"Text", "outer"}, {"Stack", _value_t(new Unprintable)});
  } catch (const EGeneric& e) {
    EXPECT_EQ(NamesOf(e), "Text,Stack,");
    EXPECT_EQ(TextOf(e, "Text"), "outer");
  }
}

__attribute__((noinline)) EStructuredException fault_at_captured_context() {
  CONTEXT context;
  RtlCaptureContext(&context);
  EXCEPTION_RECORD record = {};
  record.ExceptionCode = EXCEPTION_INT_DIVIDE_BY_ZERO;
  record.ExceptionAddress = reinterpret_cast<void*>(context.Rip);
  EXCEPTION_POINTERS pointers = {&record, &context};
  return EStructuredException(EXCEPTION_INT_DIVIDE_BY_ZERO, &pointers, GetCurrentThreadId());
}

TEST_F(DebugInformationTest, AStructuredExceptionWalksFromTheFaultsContextAndEndsWithTheStack) {
  ScopedSetting<bool> extend(ExtendDebugInformationFromException, true);
  const EStructuredException e = fault_at_captured_context();
  EXPECT_EQ(NamesOf(e), "Text,Code,Address,ModuleName,AddressName,Stack,");
  EXPECT_TRUE(StartsWith(TextOf(e, "AddressName"), "fault_at_captured_context+"));
  EXPECT_TRUE(StartsWith(TextOf(e, "Stack"), "\n-> fault_at_captured_context+"));
}

__attribute__((noinline)) std::string stack_from_here() {
  std::string stack = EGeneric::BuildStack(nullptr, 1, nullptr);  // BuildStack's own frame dropped
  return stack + std::string(GetTickCount() & 0, 'x');             // no tail call
}

TEST_F(DebugInformationTest, BuildStackAndMyDebugStackStartAtTheirCaller) {
  EXPECT_TRUE(StartsWith(stack_from_here(), "\n-> stack_from_here+"));
  const std::string mine = GetMyDebugStack();
  const std::string header = "Thread " + std::to_string(GetCurrentThreadId());
  ASSERT_TRUE(StartsWith(mine, header)) << mine;
  EXPECT_TRUE(is_test_body(first_frame(mine.substr(header.size())))) << mine;
}

__attribute__((noinline)) void churn_heaps(const std::atomic<bool>& stop, std::size_t size) {
  while (!stop) {
    HeapFree(GetProcessHeap(), 0, HeapAlloc(GetProcessHeap(), 0, size));
    std::string churn(size, 'x');  // the runtime's heap too
    churn += std::to_string(churn.size());
  }
}

// Threads suspended in the middle of allocating hold a heap's lock; the
// snapshot must not wait for it while it walks them.
TEST_F(DebugInformationTest, SnapshotShowsEveryThreadOnceWithTheCallerFirstAndNeverHangs) {
  std::atomic<bool> stop{false};
  std::atomic<int> started{0};
  std::vector<std::unique_ptr<qz_test::WorkerThread>> busy;
  std::vector<DWORD> ids(3);
  for (int t = 0; t < 3; ++t)
    busy.push_back(std::make_unique<qz_test::WorkerThread>([&, t] {
      ids[t] = GetCurrentThreadId();
      ++started;
      churn_heaps(stop, 1000 + t * 100);
    }));
  ASSERT_TRUE(qz_test::Eventually([&] { return started == 3; }));
  for (int round = 0; round < 2; ++round) {
    const std::string snapshot = TakeDebugSnapshot();
    EXPECT_TRUE(StartsWith(snapshot, "Thread " + std::to_string(GetCurrentThreadId()) + "\n-> "));
    for (DWORD id : ids) {
      const std::string header = "\n\nThread " + std::to_string(id) + "\n-> ";
      const std::size_t block = snapshot.find(header);
      ASSERT_NE(block, std::string::npos) << snapshot;
      const std::size_t next = snapshot.find("\n\nThread ", block + 1);
      EXPECT_NE(snapshot.substr(block, next - block).find("\n-> churn_heaps+"), std::string::npos)
          << snapshot;
      EXPECT_EQ(snapshot.find(header, block + 1), std::string::npos);
    }
  }
  stop = true;
  for (auto& thread : busy) EXPECT_TRUE(thread->Join(30000));
}

}  // namespace
