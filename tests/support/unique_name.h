// Names for kernel objects and files that no other test, and no other run of
// the suite, uses.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>

namespace qz_test {

// "qz-test-<stem>-<process id>-<serial>".
inline std::wstring UniqueName(const wchar_t* stem) {
  static std::atomic<int> serial{0};
  return std::wstring(L"qz-test-") + stem + L"-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++serial);
}

}  // namespace qz_test
