#include <qz/core/throw.h>
#include <qz/threads/thread.h>

#include <process.h>

TThread::TThread(entry_t entry, void* argument) { CreateThread(entry, argument, 0); }

// The runtime's call, not the system's: it sets up the runtime's per-thread
// state. On this platform both calling conventions are the same one.
void TThread::CreateThread(entry_t entry, void* argument, unsigned long stack_size) {
  if (entry == nullptr) ThrowSystemException(ERROR_INVALID_PARAMETER);
  using runtime_entry_t = unsigned(__stdcall*)(void*);
  const uintptr_t started =
      _beginthreadex(nullptr, stack_size, reinterpret_cast<runtime_entry_t>(entry), argument, 0, nullptr);
  StoreCreated(reinterpret_cast<void*>(started));
}

unsigned long TThread::SuspendThread() {
  const DWORD previous = ::SuspendThread(handle);
  if (previous == static_cast<DWORD>(-1)) ThrowSystemException();
  return previous;
}

unsigned long TThread::ResumeThread() {
  const DWORD previous = ::ResumeThread(handle);
  if (previous == static_cast<DWORD>(-1)) ThrowSystemException();
  return previous;
}

void TThread::SetThreadPriority(int priority) {
  if (!::SetThreadPriority(handle, priority)) ThrowSystemException();
}

void TThread::TerminateThread(unsigned long exit_code) {
  if (!::TerminateThread(handle, exit_code)) ThrowSystemException();
}

void TThread::SetThreadToken(void* token) {
  HANDLE thread = handle;
  if (!::SetThreadToken(&thread, token)) ThrowSystemException();
}

// Kept as the library has always done it: the flag becomes the priority.
void TThread::DisableThreadPriorityBoost(bool value) { SetThreadPriority(value ? 1 : 0); }

void TThread::QueueUserAPC(apc_routine_t routine, unsigned long long argument) {
  if (!::QueueUserAPC(reinterpret_cast<PAPCFUNC>(routine), handle, argument)) ThrowSystemException();
}

void TThread::Sleep(unsigned long ms, int alertable) {
  if (SleepEx(ms, alertable != 0) == static_cast<DWORD>(-1)) ThrowSystemException();
}

void TThread::Pause() { Sleep(1, 1); }
