// THandle: owns one kernel handle and defines what every handle-based class
// of qz does on copy, assignment and destruction.
//
// 0 and -1 (INVALID_HANDLE_VALUE) both mean "no handle"; every other value is
// owned. Copies never share a handle: copying or assigning duplicates the
// source (same access, not inheritable), so each object closes its own.
// Closing is checked everywhere, the destructor included: a handle the system
// refuses to close throws ESystemException, which is why the destructors of
// THandle and of every class built on it are noexcept(false).
//
// Assigning an object to itself is not guarded against: the own handle is
// closed first, then the resulting -1 is copied, leaving the object empty.
//
// Thread safety: one object belongs to one thread at a time; duplicates of
// a handle may be used on different threads independently.
#pragma once

#include <qz/export.h>
#include <qz/os/do_not_initialize.h>

#include <windows.h>

class QZ_API THandle {
 public:
  THandle() noexcept : handle(INVALID_HANDLE_VALUE) {}
  // Stores a duplicate of a valid `h` (the caller keeps its own handle), or
  // `h` itself when it is 0 or -1.
  explicit THandle(void* h);
  THandle(const THandle& other);
  ~THandle() noexcept(false);

  // Close the own handle (throwing on failure), then duplicate the source.
  THandle& operator=(const THandle& other);
  THandle& operator=(void* h);

  operator void*() const noexcept { return handle; }

  // Closes the own handle, then takes `h` over without duplicating it.
  void AttachHandle(void* h);
  // Gives the handle up to the caller, who must close it; stores -1.
  void* DetachHandle() noexcept;
  // Closes the stored value without testing it first; stores -1, then throws
  // if the system refused.
  void CloseHandle();

  bool IsValidHandle() const noexcept { return IsValidHandle(handle); }
  static bool IsValidHandle(void* h) noexcept { return h != nullptr && h != INVALID_HANDLE_VALUE; }

  // WaitForSingleObjectEx: WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_IO_COMPLETION
  // or WAIT_TIMEOUT; a failed wait throws.
  DWORD WaitForSingleObject(DWORD milliseconds, int alertable) const;

 protected:
  // Duplicate of `h` if valid, else `h` itself.
  static void* DuplicateOf(void* h);
  // Closes a valid handle and stores -1; throws if the close failed.
  void CloseIfValid();
  // Stores the result of a create or open call over the old handle without
  // closing it; throws for the thread's last error when `h` is null.
  void StoreCreated(void* h);

  void* handle;
};
