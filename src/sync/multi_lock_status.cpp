// The status text of TMultiLock: "<state>[, <holds>][, <n> r->w waiters]",
// for example "locked_read, 1234:R,1234:W, 1 r->w waiters".
#include <qz/sync/multi_lock.h>

#include <string>

namespace {

// Indexed by _ml_common::_state_t; the state holds nothing else.
constexpr const char* kStateNames[] = {"not_locked", "locked_read", "locked_write"};

}  // namespace

// One snapshot under the inner lock, so state, holds and waiters agree.
std::string TMultiLock::GetStatusString() const {
  inner_lock_quietly(_ml_common::current_owner());
  std::string text = leaving_inner_lock_on_throw([this] { return status_text(); });
  inner_unlock();
  return text;
}

std::string TMultiLock::status_text() const {
  std::string text = kStateNames[state.load()];
  if (!is_empty()) {
    text += ", ";
    text += dump_owners();
  }
  const int waiters = upgrade_waiters.load();
  if (waiters > 0) {
    text += ", ";
    text += std::to_string(waiters);
    text += " r->w waiters";
  }
  return text;
}
