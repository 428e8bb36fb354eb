// The lock interfaces every qz lock implements.
//
//   ILock         exclusive: Lock(timeout), Lock(), Unlock()
//   IMultiLock    adds shared reads and exclusive writes
//   IMultiLockEx  adds holds taken on one thread and released on another
//
// Time-outs are milliseconds: 0 tests without waiting, INFINITE waits without
// end; a timed operation returns whether the lock was taken. The interfaces
// have no virtual destructor: nobody deletes a lock through them.
#pragma once

#include <qz/export.h>

class QZ_API ILock {
 public:
  virtual bool Lock(unsigned int timeout) = 0;
  virtual void Lock() = 0;
  virtual void Unlock() = 0;

 protected:
  ILock() = default;
  ILock(const ILock&) = default;
  ILock& operator=(const ILock&) = default;
  ~ILock() = default;
};

class QZ_API IMultiLock : public ILock {
 public:
  virtual bool ReadLock(unsigned int timeout) = 0;
  virtual void ReadLock() = 0;
  virtual bool WriteLock(unsigned int timeout) = 0;
  virtual void WriteLock() = 0;

 protected:
  IMultiLock() = default;
  IMultiLock(const IMultiLock&) = default;
  IMultiLock& operator=(const IMultiLock&) = default;
  ~IMultiLock() = default;
};

class QZ_API IMultiLockEx : public IMultiLock {
 public:
  virtual bool ReadLockThreadIndependent(unsigned int timeout) = 0;
  virtual void ReadLockThreadIndependent() = 0;
  virtual bool WriteLockThreadIndependent(unsigned int timeout) = 0;
  virtual void WriteLockThreadIndependent() = 0;
  virtual void UnlockThreadIndependent() = 0;

 protected:
  IMultiLockEx() = default;
  IMultiLockEx(const IMultiLockEx&) = default;
  IMultiLockEx& operator=(const IMultiLockEx&) = default;
  ~IMultiLockEx() = default;
};
