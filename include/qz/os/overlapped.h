// TOverlapped<File>: a file handle paired with the OVERLAPPED block of its
// next asynchronous operation. Used as TOverlapped<TFile>.
//
// The file must have been opened for overlapped I/O (FILE_FLAG_OVERLAPPED,
// e.g. by ::CreateFileW and AttachHandle, or a mailslot). A ReadFile or
// WriteFile returns as soon as the operation has started; completion is
// read with GetOverlappedResult or HasIoCompleted, or waited for on hEvent:
//
//   TOverlapped<TFile> pipe;
//   pipe.AttachHandle(::CreateFileW(name, GENERIC_READ, 0, nullptr,
//                                   OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
//   pipe.SetEvent(done);        // a manual-reset event of the caller's
//   pipe.ReadFile(buffer, sizeof buffer);
//   ... wait for `done` ...
//   DWORD n;
//   pipe.GetOverlappedResult(n, false);
//
// hEvent is owned: the destructor and SetEvent close it (without checking).
// Copies copy the OVERLAPPED block byte for byte, hEvent included, so a copy
// and its source close the same event; give each copy its own through
// SetEvent. The file part is duplicated as THandle does.
//
// Thread safety: one object belongs to one thread at a time, and the block
// must not be changed while an operation started with it is pending.
#pragma once

#include <qz/core/throw.h>
#include <qz/os/file.h>

template <class File>
class TOverlapped : public OVERLAPPED, public File {
 public:
  TOverlapped() : OVERLAPPED(), File(DoNotInitialize) {}
  explicit TOverlapped(_DoNotInitialize) : OVERLAPPED(), File(DoNotInitialize) {}
  // A duplicate of `h`.
  explicit TOverlapped(const THandle& h) : OVERLAPPED(), File(h) {}
  TOverlapped(const TOverlapped& other) : OVERLAPPED(other), File(other) {}

  // The old hEvent is overwritten, not closed, like every other byte of
  // the block.
  TOverlapped& operator=(const TOverlapped& other) {
    static_cast<OVERLAPPED&>(*this) = other;
    File::operator=(other);
    return *this;
  }

  ~TOverlapped() noexcept(false) {
    if (hEvent != nullptr) ::CloseHandle(hEvent);
  }

  // Closes the current event (unchecked), then owns a duplicate of `event`,
  // or none when it is null.
  void SetEvent(void* event) {
    if (hEvent != nullptr) ::CloseHandle(hEvent);
    hEvent = nullptr;
    if (event == nullptr) return;
    HANDLE process = GetCurrentProcess();
    if (!DuplicateHandle(process, event, process, &hEvent, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
      hEvent = nullptr;
      ThrowSystemException();
    }
  }

  // The file offset of the next operation.
  void SetOffset(unsigned __int64 offset) {
    Offset = static_cast<DWORD>(offset);
    OffsetHigh = static_cast<DWORD>(offset >> 32);
  }

  // Start the transfer. Completion at once and ERROR_IO_PENDING both return
  // normally; the count is only meaningful after an immediate completion.
  DWORD ReadFile(void* buffer, DWORD size) {
    DWORD done = 0;
    ReadFile(buffer, size, done);
    return done;
  }
  void ReadFile(void* buffer, DWORD size, DWORD& done) {
    Started(::ReadFile(this->handle, buffer, size, &done, this));
  }
  DWORD WriteFile(const void* buffer, DWORD size) {
    DWORD done = 0;
    WriteFile(buffer, size, done);
    return done;
  }
  void WriteFile(const void* buffer, DWORD size, DWORD& done) {
    Started(::WriteFile(this->handle, buffer, size, &done, this));
  }

  // True when the operation is complete (with its byte count in
  // `transferred`), false while it is still running (ERROR_IO_INCOMPLETE).
  // With `wait` it blocks until the operation ends.
  bool GetOverlappedResult(DWORD& transferred, bool wait) {
    if (::GetOverlappedResult(this->handle, this, &transferred, wait ? TRUE : FALSE)) return true;
    if (GetLastError() == ERROR_IO_INCOMPLETE) return false;
    ThrowSystemException();
  }

  // The status the system leaves in Internal is no longer STATUS_PENDING.
  bool HasIoCompleted() const { return Internal != kStatusPending; }

  void CancelIo() {
    if (!::CancelIo(this->handle)) ThrowSystemException();
  }

 private:
  static constexpr ULONG_PTR kStatusPending = 0x103;

  static void Started(BOOL result) {
    if (!result && GetLastError() != ERROR_IO_PENDING) ThrowSystemException();
  }
};
