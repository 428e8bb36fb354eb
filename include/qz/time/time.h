// _time_t: calendar time with one-second resolution.
//
// One signed 64-bit count of seconds since 1970-01-01 00:00:00 UTC. The value
// -1 is reserved as _time_t::invalid, which every failing producer yields; a
// default-constructed time is the epoch, not invalid.
//
// Thread safety: a plain value type; distinct objects may be used on any
// threads, one object is not to be written while another thread reads it.
#pragma once

#include <qz/export.h>

#include <string>

class QZ_API _time_t {
 public:
  static const _time_t invalid;

  constexpr _time_t(__int64 t = 0) noexcept : t_(t) {}
  constexpr _time_t(int t) noexcept : t_(t) {}

  _time_t& operator=(const __int64& t) noexcept {
    t_ = t;
    return *this;
  }

  // Comparisons and ordering go through this conversion.
  constexpr operator __int64() const noexcept { return t_; }
  constexpr bool valid() const noexcept { return t_ != -1; }

  // The C runtime's ctime text (local time) without its trailing newline, or
  // "<invalid time>".
  std::string ctime() const;

 private:
  __int64 t_;
};
