// Scoped read and write holds on a multi-lock through its IMultiLock face,
// released on every way out (private to the library).
#pragma once

#include <qz/sync/lock.h>

class read_hold {
 public:
  explicit read_hold(IMultiLock& lock) : lock_(lock) { lock_.ReadLock(); }
  ~read_hold() { lock_.Unlock(); }
  read_hold(const read_hold&) = delete;
  read_hold& operator=(const read_hold&) = delete;

 private:
  IMultiLock& lock_;
};

class write_hold {
 public:
  explicit write_hold(IMultiLock& lock) : lock_(lock) { lock_.WriteLock(); }
  ~write_hold() { lock_.Unlock(); }
  write_hold(const write_hold&) = delete;
  write_hold& operator=(const write_hold&) = delete;

 private:
  IMultiLock& lock_;
};
