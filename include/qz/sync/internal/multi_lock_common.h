// _ml_common: the vocabulary shared by the parts of TMultiLock.
//
// An owner identity (_owner_id) is one 32-bit word. Its low 31 bits name the
// owner: the calling thread's identifier for thread-bound holds, 0 for the
// thread-independent ones (no thread has identifier 0, so every independent
// hold belongs to one shared owner). Its high bit marks a hold in the owners
// list as a write; comparisons of owners ignore it. All bits set means "no
// owner" and is the free value of the inner lock.
//
// Thread safety: constants and pure functions only.
#pragma once
// Internal: a part of TMultiLock, reached through <qz/sync/multi_lock.h>.

#include <windows.h>

struct _ml_common {
  typedef unsigned int _owner_id;

  // How many of the list's entries belong to one owner (count_my_shares).
  enum _shares_t { shares_none = 0, shares_some = 1, shares_all = 2 };

  // Whether a release is the last of a locked period (is_last_owner):
  // the owner's only entry, or the owner's write over reads only.
  enum _last_t { last_not = 0, last_sole_entry = 1, last_write_over_reads = 2 };

  static constexpr _owner_id no_owner = 0xFFFFFFFFu;
  static constexpr _owner_id write_bit = 0x80000000u;
  static constexpr _owner_id owner_bits = 0x7FFFFFFFu;
  static constexpr _owner_id independent_owner = 0;

  // Signal bits: which waiters an event stands for.
  static constexpr unsigned int signal_free = 2;
  static constexpr unsigned int signal_sole_owner = 4;
  static constexpr unsigned int signal_read_open = 8;

  // The lock's states, as the status text names them.
  enum _state_t { not_locked = 0, locked_read = 1, locked_write = 2 };

  // Whom a hold belongs to: the calling thread, or no thread (taken by one
  // thread, released by any).
  enum class _hold_t { thread_bound, thread_independent };

  static _owner_id current_owner() noexcept { return GetCurrentThreadId() & owner_bits; }
  static bool is_write(_owner_id entry) noexcept { return (entry & write_bit) != 0; }
  static bool same_owner(_owner_id a, _owner_id b) noexcept {
    return ((a ^ b) & owner_bits) == 0;
  }
};
