// TProcess: a child process started by this one, owned through THandle.
// Wait for it with THandle::WaitForSingleObject and read its exit code with
// GetExitCodeProcess:
//
//   TProcess child;
//   child.CreateProcessW(L"cmd.exe /c exit 7", 0);
//   child.WaitForSingleObject(INFINITE, TRUE);
//
// Thread safety: one object belongs to one thread at a time.
#pragma once

#include <qz/export.h>
#include <qz/os/handle.h>

class QZ_API TProcess : public THandle {
 public:
  TProcess() noexcept = default;

  // Starts `commandLine` (program and arguments; no separate application
  // name) with the given creation flags, the parent's environment and
  // directory, no inherited handles. Keeps the process handle over the old
  // one without closing it; the thread handle is closed at once.
  void CreateProcessW(const wchar_t* commandLine, DWORD creationFlags);
  void CreateProcessW(const char* commandLine, DWORD creationFlags);
  void TerminateProcess(int exitCode);

 private:
  void Started(const PROCESS_INFORMATION& started);
};
