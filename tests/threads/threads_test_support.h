// Helpers shared by the thread tests: a thread class and jobs made from
// lambdas, and an interruption checked to unwind.
#pragma once

#include <qz/logging/global_streams.h>
#include <qz/sync/event.h>
#include <qz/threads/thread_class.h>
#include <qz/threads/thread_job.h>
#include <qz/threads/thread_task.h>

#include "support/captured_stream.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <tlhelp32.h>

#include <atomic>
#include <functional>
#include <string>
#include <utility>

namespace threads_test {

// A TThreadClass whose body is a lambda. It notes OnException calls and
// whether the body got past its end or unwound, and stops its thread before
// its members go (as every derived class must).
class LambdaThread : public TThreadClass {
 public:
  explicit LambdaThread(std::function<void()> body) : body_(std::move(body)) {}
  ~LambdaThread() override { StopThread(10000); }
  void Execute() override {
    started.Set();
    body_();
    returned = true;
  }
  void OnException() override { ++exceptions_reported; }
  int state() const { return thread_state; }

  TEvent started;
  std::atomic<bool> returned{false};
  std::atomic<int> exceptions_reported{0};

 private:
  std::function<void()> body_;
};

// Set when the frame that holds it unwinds: proof that a body left by an
// exception and not by termination.
struct UnwindMark {
  std::atomic<bool>& flag;
  ~UnwindMark() { flag = true; }
};

// Starts `wait` as a thread class's body, lets it block, interrupts it and
// checks that it unwound by the interruption (not by termination), quietly.
inline void InterruptWhileWaiting(const std::function<void()>& wait) {
  qz_test::CapturedStream debug(Debug);
  std::atomic<bool> unwound{false};
  LambdaThread thread([&] {
    UnwindMark mark{unwound};
    wait();
  });
  thread.StartThread();
  ASSERT_TRUE(thread.started.Signaled(10000));
  Sleep(100);  // past the spinning, asleep in the kernel
  const DWORD start = GetTickCount();
  thread.InterruptThread(0, 20000);
  EXPECT_LT(GetTickCount() - start, 10000u) << "ended by termination";
  EXPECT_TRUE(unwound);
  EXPECT_FALSE(thread.returned);
  EXPECT_EQ(thread.exceptions_reported, 0);
  EXPECT_EQ(thread.state(), 0);
  EXPECT_EQ(debug.text(), "");
}

// A job (IThreadJob) or task (TThreadTask) whose work is a lambda.
template <class Base>
class Lambda : public Base {
 public:
  explicit Lambda(std::function<void()> work) : work_(std::move(work)) {}
  void Execute() override { work_(); }

 private:
  std::function<void()> work_;
};
using LambdaJob = Lambda<IThreadJob>;
using LambdaTask = Lambda<TThreadTask>;

// A number from a pool's text form, e.g. Field(pool, "Threads").
inline int Field(const SmartPtrObj& pool, const std::string& name) {
  const std::string text = pool.ToString();
  const size_t at = text.find(" " + name + "=");
  return at == std::string::npos ? -1 : std::stoi(text.substr(at + name.size() + 2));
}

// Threads of this process started through the C runtime's thread start,
// as every library thread is (the test's own threads are not).
inline int LibraryThreads() {
  using query_t = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
  const auto query = reinterpret_cast<query_t>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationThread")));
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    const HANDLE thread = entry.th32OwnerProcessID != GetCurrentProcessId()
                              ? nullptr
                              : OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID);
    if (thread == nullptr) continue;
    void* start = nullptr;
    HMODULE module = nullptr;
    constexpr int kWin32StartAddress = 9;
    count += query(thread, kWin32StartAddress, &start, sizeof start, nullptr) == 0 &&
             GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                static_cast<LPCWSTR>(start), &module) &&
             module == GetModuleHandleW(L"msvcrt.dll");
    CloseHandle(thread);
  }
  CloseHandle(snapshot);
  return count;
}

// Runs this program again with `filter` (disabled tests included); the exit
// code, or -1 when it has not ended within `ms` (it is then terminated).
// For faults that hang or end a process instead of failing a test.
inline int RunChild(const std::string& filter, DWORD ms) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(program) + L"\" --gtest_also_run_disabled_tests --gtest_filter=" +
                         std::wstring(filter.begin(), filter.end());
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION child{};
  if (!CreateProcessW(program, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &child))
    return -2;
  CloseHandle(child.hThread);
  DWORD code = static_cast<DWORD>(-1);
  if (WaitForSingleObject(child.hProcess, ms) == WAIT_OBJECT_0)
    GetExitCodeProcess(child.hProcess, &code);
  else
    TerminateProcess(child.hProcess, 3);
  CloseHandle(child.hProcess);
  return static_cast<int>(code);
}

}  // namespace threads_test
