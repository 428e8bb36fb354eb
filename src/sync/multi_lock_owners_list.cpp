#include <qz/sync/internal/multi_lock_owners_list.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// std::bad_alloc as the rest of the library words it.
class owners_bad_alloc : public std::bad_alloc {
 public:
  const char* what() const noexcept override { return "bad allocation"; }
};

}  // namespace

_ml_full_owners_list::~_ml_full_owners_list() {
  if (!is_inline()) std::free(owners);
}

// One entry at a time: the list is as long as the most holds ever taken at
// once, which for a lock is rarely more than a few.
void _ml_full_owners_list::grow() {
  const int bigger = capacity + 1;
  _owner_id* moved;
  if (is_inline()) {
    moved = static_cast<_owner_id*>(std::malloc(sizeof(_owner_id) * bigger));
    if (moved != nullptr) std::memcpy(moved, inline_room, sizeof inline_room);
  } else {
    moved = static_cast<_owner_id*>(std::realloc(owners, sizeof(_owner_id) * bigger));
  }
  if (moved == nullptr) throw owners_bad_alloc();
  owners = moved;
  capacity = bigger;
}

_ml_full_owners_list::_owner_id _ml_full_owners_list::remove_me(_owner_id owner) noexcept {
  for (int i = owner_count - 1; i >= 0; --i) {
    if (!_ml_common::same_owner(owners[i], owner)) continue;
    const _owner_id removed = owners[i];
    for (int j = i + 1; j < owner_count; ++j) owners[j - 1] = owners[j];
    --owner_count;
    return removed;
  }
  return _ml_common::no_owner;
}

_ml_common::_shares_t _ml_full_owners_list::count_my_shares(_owner_id owner) const noexcept {
  int mine = 0;
  for (int i = 0; i < owner_count; ++i)
    if (_ml_common::same_owner(owners[i], owner)) ++mine;
  if (mine == 0) return _ml_common::shares_none;
  return mine == owner_count ? _ml_common::shares_all : _ml_common::shares_some;
}

bool _ml_full_owners_list::is_all_me(_owner_id owner) const noexcept {
  return count_my_shares(owner) == _ml_common::shares_all;
}

bool _ml_full_owners_list::is_any_me(_owner_id owner) const noexcept {
  for (int i = 0; i < owner_count; ++i)
    if (_ml_common::same_owner(owners[i], owner)) return true;
  return false;
}

bool _ml_full_owners_list::is_all_read() const noexcept {
  if (owner_count == 0) return false;
  for (int i = 0; i < owner_count; ++i)
    if (_ml_common::is_write(owners[i])) return false;
  return true;
}

bool _ml_full_owners_list::is_all_same() const noexcept {
  return owner_count != 0 && is_all_me(owners[0]);
}

_ml_common::_last_t _ml_full_owners_list::is_last_owner(_owner_id owner) const noexcept {
  if (owner_count == 1)
    return _ml_common::same_owner(owners[0], owner) ? _ml_common::last_sole_entry : _ml_common::last_not;
  if (owner_count == 0) return _ml_common::last_not;
  const _owner_id latest = owners[owner_count - 1];
  if (!_ml_common::is_write(latest) || !_ml_common::same_owner(latest, owner)) return _ml_common::last_not;
  for (int i = 0; i < owner_count - 1; ++i)
    if (_ml_common::is_write(owners[i])) return _ml_common::last_not;
  return _ml_common::last_write_over_reads;
}

std::string _ml_full_owners_list::dump_owners() const {
  std::string text;
  for (int i = 0; i < owner_count; ++i) {
    if (i != 0) text += ',';
    text += std::to_string(owners[i] & _ml_common::owner_bits);
    text += _ml_common::is_write(owners[i]) ? ":W" : ":R";
  }
  return text;
}
