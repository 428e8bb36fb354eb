// Helpers shared by the tests of the operating-system wrappers.
#pragma once

#include <qz/errors/exceptions.h>

#include <windows.h>

#include <string>

namespace os_test {

// A file name in the temporary folder, unique to this process and object;
// the file is deleted when the object ends.
class TempPath {
 public:
  TempPath() {
    static int serial = 0;
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    wide_ = std::wstring(folder) + L"qz-os-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
            std::to_wstring(++serial) + L".tmp";
    narrow_.assign(wide_.begin(), wide_.end());  // the temporary folder is ASCII
  }
  ~TempPath() { DeleteFileW(wide_.c_str()); }
  TempPath(const TempPath&) = delete;
  TempPath& operator=(const TempPath&) = delete;

  const wchar_t* wide() const { return wide_.c_str(); }
  const char* narrow() const { return narrow_.c_str(); }

 private:
  std::wstring wide_;
  std::string narrow_;
};

// A name for a kernel object that no other test run uses.
inline std::wstring UniqueName(const wchar_t* stem) {
  static int serial = 0;
  return std::wstring(L"qz-os-test-") + stem + L"-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++serial);
}

// The "Code" an ESystemException carries.
inline int CodeOf(const ESystemException& e) { return static_cast<int>(e.get_value("Code")); }

// An unnamed manual-reset event, closed at the end of the test.
struct RawEvent {
  HANDLE h = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ~RawEvent() { ::CloseHandle(h); }
};

// Whether a kernel object is signalled right now.
inline bool IsSignaled(HANDLE h) { return WaitForSingleObject(h, 0) == WAIT_OBJECT_0; }

}  // namespace os_test
