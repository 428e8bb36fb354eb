// _ml_full_owners_list: every hold of a TMultiLock, in the order taken.
//
// One entry per outstanding hold (a thread holding two reads and a write has
// three), each an _owner_id with the write bit set for a write. Two entries
// fit inline; the third moves the list to the heap, and every further hold
// grows it by exactly one entry. The list never shrinks. A failed growth
// throws std::bad_alloc ("bad allocation") and leaves the list as it was.
//
//   _ml_full_owners_list list;
//   list.insert_me_read(7);
//   list.insert_me_write(7);
//   list.dump_owners();          // "7:R,7:W"
//   list.remove_me(7);           // takes out 7:W, the most recent of 7
//
// Thread safety: none of its own; TMultiLock uses it under its inner lock.
#pragma once
// Internal: a part of TMultiLock, reached through <qz/sync/multi_lock.h>.

#include <qz/export.h>
#include <qz/sync/internal/multi_lock_common.h>

#include <string>

class QZ_API _ml_full_owners_list {
 public:
  typedef _ml_common::_owner_id _owner_id;

  _ml_full_owners_list() noexcept : owners(inline_room), inline_room{0, 0}, owner_count(0), capacity(2) {}
  _ml_full_owners_list(const _ml_full_owners_list&) = delete;
  _ml_full_owners_list& operator=(const _ml_full_owners_list&) = delete;
  ~_ml_full_owners_list();

  // Appends `entry` as it is.
  void insert_me(_owner_id entry) {
    if (owner_count == capacity) grow();
    owners[owner_count++] = entry;
  }
  void insert_me_read(_owner_id owner) { insert_me(owner & ~_ml_common::write_bit); }
  void insert_me_write(_owner_id owner) { insert_me(owner | _ml_common::write_bit); }

  // Removes the most recent entry of `owner`, moving the later ones down,
  // and returns it; no_owner (and no change) when the owner has none.
  _owner_id remove_me(_owner_id owner) noexcept;

  _ml_common::_shares_t count_my_shares(_owner_id owner) const noexcept;
  // Non-empty and every entry is the owner's.
  bool is_all_me(_owner_id owner) const noexcept;
  // Some entry is the owner's.
  bool is_any_me(_owner_id owner) const noexcept;
  // Non-empty and no entry is a write.
  bool is_all_read() const noexcept;
  // Non-empty and every entry has one owner.
  bool is_all_same() const noexcept;
  bool is_empty() const noexcept { return owner_count == 0; }
  _ml_common::_last_t is_last_owner(_owner_id owner) const noexcept;
  // "owner:R" or "owner:W" per entry in list order, separated by commas.
  std::string dump_owners() const;

  int count() const noexcept { return owner_count; }
  int room() const noexcept { return capacity; }
  bool is_inline() const noexcept { return owners == inline_room; }
  _owner_id entry(int index) const noexcept { return owners[index]; }

 private:
  void grow();

  _owner_id* owners;
  _owner_id inline_room[2];
  int owner_count;
  int capacity;
};
