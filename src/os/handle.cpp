#include <qz/core/throw.h>
#include <qz/os/handle.h>

void* THandle::DuplicateOf(void* h) {
  if (!IsValidHandle(h)) return h;
  HANDLE process = GetCurrentProcess();
  HANDLE copy = nullptr;
  if (!DuplicateHandle(process, h, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS))
    ThrowSystemException();
  return copy;
}

void THandle::CloseIfValid() {
  if (IsValidHandle()) CloseHandle();
}

void THandle::StoreCreated(void* h) {
  handle = h;
  if (h == nullptr) ThrowSystemException();
}

THandle::THandle(void* h) : handle(DuplicateOf(h)) {}

THandle::THandle(const THandle& other) : handle(DuplicateOf(other.handle)) {}

// A handle that cannot be closed is a fault worth hearing about even while an
// object dies, so the close is checked here as everywhere else.
THandle::~THandle() noexcept(false) { CloseIfValid(); }

// No self-assignment test on purpose: assigning an object to itself closes
// its handle and then copies the -1 that is left.
THandle& THandle::operator=(const THandle& other) {
  CloseIfValid();
  handle = DuplicateOf(other.handle);
  return *this;
}

THandle& THandle::operator=(void* h) {
  CloseIfValid();
  handle = DuplicateOf(h);
  return *this;
}

void THandle::AttachHandle(void* h) {
  CloseIfValid();
  handle = h;
}

void* THandle::DetachHandle() noexcept {
  void* h = handle;
  handle = INVALID_HANDLE_VALUE;
  return h;
}

void THandle::CloseHandle() {
  void* h = handle;
  handle = INVALID_HANDLE_VALUE;
  if (!::CloseHandle(h)) ThrowSystemException();
}

DWORD THandle::WaitForSingleObject(DWORD milliseconds, int alertable) const {
  const DWORD result = WaitForSingleObjectEx(handle, milliseconds, alertable);
  if (result == WAIT_FAILED) ThrowSystemException();
  return result;
}
