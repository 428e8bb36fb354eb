// Helpers shared by the multi-lock tests: a lock that shows its insides,
// status texts to compare with, and the shared test threads.
#pragma once

#include <qz/errors/exceptions.h>
#include <qz/sync/multi_lock.h>

#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace multi_lock_test {

using qz_test::Actor;
using qz_test::Eventually;
using qz_test::MarkRan;
using qz_test::ThrowInterrupt;

// A TMultiLock that shows its owners list and events.
class ProbedLock : public TMultiLock {
 public:
  using _ml_free_signal_event::event_for;
  using _ml_free_signal_event::has_event;
  using _ml_free_signal_event::waiters;
  using _ml_free_signal_event::signalled;
  using _ml_full_owners_list::count;
  int waiting_upgraders() const { return upgrade_waiters.load(); }
};

// Whether `status` lists a hold of the owner `id`.
inline bool HasOwner(const std::string& status, DWORD id) {
  const std::string owner = std::to_string(id) + ":";
  return status.find(" " + owner) != std::string::npos || status.find("," + owner) != std::string::npos;
}

// When the test ends, gives up every hold the test's own thread still has
// and every thread-independent one, so that an actor a failed check left
// waiting gets in and finishes rather than staying stuck. Declare it after
// the actors, so that it runs before they are ended.
class ReleaseOnExit {
 public:
  explicit ReleaseOnExit(TMultiLock& lock) : lock_(lock) {}
  ~ReleaseOnExit() {
    for (int i = 0; i < 100 && HasOwner(lock_.GetStatusString(), GetCurrentThreadId()); ++i) lock_.Unlock();
    for (int i = 0; i < 100 && HasOwner(lock_.GetStatusString(), 0); ++i) lock_.UnlockThreadIndependent();
  }
  ReleaseOnExit(const ReleaseOnExit&) = delete;
  ReleaseOnExit& operator=(const ReleaseOnExit&) = delete;

 private:
  TMultiLock& lock_;
};

// "1234:R" for the thread with identifier `id`.
inline std::string Read(DWORD id) { return std::to_string(id) + ":R"; }
inline std::string Write(DWORD id) { return std::to_string(id) + ":W"; }
inline DWORD Me() { return GetCurrentThreadId(); }

// `pattern` with each "me:" made the calling thread's owner prefix.
inline std::string Mine(std::string pattern) {
  const std::string me = std::to_string(Me()) + ":";
  for (size_t at; (at = pattern.find("me:")) != std::string::npos;) pattern.replace(at, 3, me);
  return pattern;
}

// Runs `ops` on the calling thread: r, w, l take a read, write or Lock hold,
// R, W, L the same without waiting (they must be granted), u releases one;
// i, j take an independent read or write, x releases one.
inline void Do(TMultiLock& lock, const std::string& ops) {
  for (const char op : ops) {
    switch (op) {
      case 'r': lock.ReadLock(); break;
      case 'w': lock.WriteLock(); break;
      case 'l': lock.Lock(); break;
      case 'R': EXPECT_TRUE(lock.ReadLock(0)) << ops; break;
      case 'W': EXPECT_TRUE(lock.WriteLock(0)) << ops; break;
      case 'L': EXPECT_TRUE(lock.Lock(0)) << ops; break;
      case 'u': lock.Unlock(); break;
      case 'i': lock.ReadLockThreadIndependent(); break;
      case 'j': lock.WriteLockThreadIndependent(); break;
      case 'x': lock.UnlockThreadIndependent(); break;
      default: ADD_FAILURE() << "unknown step " << op;
    }
  }
}

}  // namespace multi_lock_test
