#include <qz/time/time.h>

const _time_t _time_t::invalid(static_cast<__int64>(-1));

namespace {

// The runtime normalises the structure it is given; the const of the public
// signatures is only the caller's promise not to need the original back.
tm* normalised_in_place(const tm* t) { return const_cast<tm*>(t); }

}  // namespace

_time_t::_time_t(const tm& local) : t_(_mktime64(normalised_in_place(&local))) {}

_time_t::_time_t(const tm* local) : t_(local ? _mktime64(normalised_in_place(local)) : -1) {}

_time_t& _time_t::operator=(const tm& local) { return *this = _time_t(local); }

_time_t& _time_t::operator=(const tm* local) { return *this = _time_t(local); }

_time_t _time_t::time() { return _time64(nullptr); }

_time_t _time_t::mktime(int year, int month, int day, int hour, int minute, int second) {
  return mktime(year, month, day, hour, minute, second, false);
}

_time_t _time_t::mktime(int year, int month, int day, int hour, int minute, int second, bool utc) {
  tm t = {};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  // UTC knows no daylight saving; locally the runtime decides which applies.
  t.tm_isdst = utc ? 0 : -1;
  return utc ? _mkgmtime64(&t) : _mktime64(&t);
}

_time_t _time_t::mkgmtime(const tm& utc) { return _mkgmtime64(normalised_in_place(&utc)); }

_time_t _time_t::mkgmtime(const tm* utc) {
  if (!utc) return invalid;
  return _mkgmtime64(normalised_in_place(utc));
}

// The runtime's error results are not examined: on failure it fills the
// structure with -1s, which the Windows forms then refuse.
tm _time_t::gmtime() const {
  tm t = {};
  const __time64_t value = t_;
  _gmtime64_s(&t, &value);
  return t;
}

tm _time_t::localtime() const {
  tm t = {};
  const __time64_t value = t_;
  _localtime64_s(&t, &value);
  return t;
}
