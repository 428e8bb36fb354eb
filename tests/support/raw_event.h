// Kernel events made straight from the system, for tests that must not rely
// on the wrappers they check.
#pragma once

#include <windows.h>

namespace qz_test {

// An unnamed manual-reset event, closed at the end of the test.
struct RawEvent {
  HANDLE h = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  RawEvent() = default;
  RawEvent(const RawEvent&) = delete;
  RawEvent& operator=(const RawEvent&) = delete;
  ~RawEvent() { ::CloseHandle(h); }
};

// Whether a kernel object is signalled right now.
inline bool IsSignaled(HANDLE h) { return WaitForSingleObject(h, 0) == WAIT_OBJECT_0; }

}  // namespace qz_test
