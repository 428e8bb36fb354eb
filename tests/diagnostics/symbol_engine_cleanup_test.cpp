// SymCleanup when the symbol lock stays held past its time-out: the use it
// ends must still count, so that the last user's cleanup unloads the
// debug-help library.
#include <qz/diagnostics/symbols.h>

#include "support/loader_lock.h"
#include "support/raw_event.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

bool DebugHelpLoaded() { return GetModuleHandleW(L"dbghelp.dll") != nullptr; }

// An address in this program, which the engine's module list holds.
unsigned long long AddressInTheProgram() {
  void* volatile function = reinterpret_cast<void*>(&DebugHelpLoaded);
  return reinterpret_cast<unsigned long long>(function);
}

// The symbol lock's time-out, as <qz/diagnostics/symbols.h> states it; the
// tick count steps by up to 16 ms.
constexpr DWORD kLockTimeoutMs = 20000;
constexpr DWORD kTickMs = 16;

// Sets an event when the scope ends, whichever way it ends.
struct SetOnExit {
  HANDLE event;
  ~SetOnExit() { SetEvent(event); }
};

// This thread is the engine's only user. A second thread (the checker) holds
// the symbol lock without being a user: EnsureModuleSymbolsLoaded checks,
// under the lock, that the module holding the address is still loaded, which
// asks the loader for the module's file name and so waits for the loader
// lock, held by a third thread (the holder). This thread's SymCleanup then
// cannot get the symbol lock and gives up after its time-out (once, 20 s).
// When the holder lets go and the checker is done, no user is left: the
// library must be gone, and a new start and cleanup must work as before.
//
// Threads are made before the loader lock is taken: a thread starting while
// another holds it waits for it.
TEST(SymbolEngineCleanup, ACleanupThatTimesOutStillLetsTheLastUseUnloadTheLibrary) {
  const qz_test::LoaderLock loader = qz_test::FindLoaderLock();
  ASSERT_TRUE(loader.lock && loader.unlock);
  ASSERT_FALSE(DebugHelpLoaded()) << "a test left the engine started";
  ASSERT_TRUE(SymInitialize());
  ASSERT_TRUE(DebugHelpLoaded());

  qz_test::RawEvent checker_ready, check, checking, loader_held, release_loader;
  bool checked = false;
  qz_test::WorkerThread checker([&] {
    SetEvent(checker_ready.h);
    if (WaitForSingleObject(check.h, 30000) != WAIT_OBJECT_0) return;
    SetEvent(checking.h);
    checked = EnsureModuleSymbolsLoaded(AddressInTheProgram());
  });
  ASSERT_EQ(WaitForSingleObject(checker_ready.h, 10000), WAIT_OBJECT_0);
  qz_test::WorkerThread holder([&] {
    ULONG_PTR cookie = 0;
    if (loader.lock(0, nullptr, &cookie) < 0) return;
    SetEvent(loader_held.h);
    WaitForSingleObject(release_loader.h, 60000);
    loader.unlock(0, cookie);
  });
  DWORD cleanup_ms = 0;
  bool checker_waited = false;
  {
    SetOnExit release{release_loader.h};  // nothing here may return with the loader lock held
    if (WaitForSingleObject(loader_held.h, 10000) == WAIT_OBJECT_0) {
      SetEvent(check.h);
      WaitForSingleObject(checking.h, 10000);
      Sleep(1000);  // the checker takes the symbol lock, then waits for the loader lock
      const DWORD start = GetTickCount();
      SymCleanup();
      cleanup_ms = GetTickCount() - start;
      checker_waited = WaitForSingleObject(checker.handle(), 0) == WAIT_TIMEOUT;
    }
  }
  ASSERT_TRUE(holder.Join(30000) && checker.Join(30000)) << "the threads did not end";
  ASSERT_GE(cleanup_ms + kTickMs, kLockTimeoutMs) << "the cleanup got the symbol lock: no time-out";
  ASSERT_TRUE(checker_waited) << "the checker did not hold the symbol lock for the whole time-out";
  EXPECT_TRUE(checked);

  EXPECT_FALSE(DebugHelpLoaded()) << "the last use ended, the library stayed loaded";
  ASSERT_TRUE(SymInitialize());
  EXPECT_TRUE(DebugHelpLoaded());
  EXPECT_EQ(SymGetModuleFromAddress(AddressInTheProgram()), "qz_diagnostics_tests");
  SymCleanup();
  EXPECT_FALSE(DebugHelpLoaded());
}

}  // namespace
