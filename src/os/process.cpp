#include <qz/core/throw.h>
#include <qz/os/process.h>

#include <cwchar>
#include <vector>

void TProcess::Started(const PROCESS_INFORMATION& started) {
  handle = started.hProcess;
  ::CloseHandle(started.hThread);
}

// The wide call may write into the command line, so it gets a copy.
void TProcess::CreateProcessW(const wchar_t* commandLine, DWORD creationFlags) {
  std::vector<wchar_t> line(commandLine, commandLine + std::wcslen(commandLine) + 1);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (!::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, creationFlags, nullptr,
                        nullptr, &startup, &started))
    ThrowSystemException();
  Started(started);
}

// The narrow call converts the line into a buffer of its own and leaves the
// caller's string alone.
void TProcess::CreateProcessW(const char* commandLine, DWORD creationFlags) {
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (!::CreateProcessA(nullptr, const_cast<char*>(commandLine), nullptr, nullptr, FALSE,
                        creationFlags, nullptr, nullptr, &startup, &started))
    ThrowSystemException();
  Started(started);
}

void TProcess::TerminateProcess(int exitCode) {
  if (!::TerminateProcess(handle, static_cast<UINT>(exitCode))) ThrowSystemException();
}
