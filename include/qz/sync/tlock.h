// TLock: holds any ILock for the length of a block.
//
//   {
//     TLock hold(section);            // Lock()
//     ...
//   }                                 // Unlock()
//
//   TLock hold(mutex, 500);           // Lock(500); ESystemException with
//                                     // "Code" 258 after 500 ms
//
// The const forms lock the object all the same. Unlock() may end the hold
// early; the destructor then releases nothing more. The destructor passes on
// what a failing release throws.
//
// Assignment copies the pointer only, without locking: both guards then
// release the same lock when they end. A guard is not copy-constructed.
//
// Thread safety: a guard is used by the one thread that made it.
#pragma once

#include <qz/export.h>
#include <qz/sync/lock.h>

class QZ_API TLock {
 public:
  explicit TLock(ILock& target);
  explicit TLock(const ILock& target);
  explicit TLock(ILock* target);
  explicit TLock(const ILock* target);
  // Lock(timeout); when that fails the guard holds nothing and throws
  // ESystemException(258), the system's wait-time-out code.
  TLock(ILock& target, unsigned int timeout);
  TLock(const ILock& target, unsigned int timeout);
  TLock(ILock* target, unsigned int timeout);
  TLock(const ILock* target, unsigned int timeout);
  TLock(const TLock&) = delete;
  ~TLock() noexcept(false);

  TLock& operator=(const TLock& other) noexcept;

  // Locks the stored lock again; the guard must hold a lock.
  void Lock();
  // Locks the stored lock again; on failure the guard forgets it.
  bool Lock(unsigned int timeout);
  // Releases the lock if the guard holds one, then holds nothing.
  void Unlock();

 private:
  void Take(unsigned int timeout);

  ILock* lock;
};
