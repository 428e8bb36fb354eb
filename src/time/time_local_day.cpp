// Local-day arithmetic. Every step goes back through the local mktime with
// the daylight-saving flag reset, so that the runtime picks the offset that
// applies at the new time of day rather than the one of the original value.
#include <qz/time/time.h>

namespace {

tm at_time_of_day(tm t, int hour, int minute, int second) {
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  t.tm_wday = 0;
  t.tm_isdst = -1;
  return t;
}

}  // namespace

_time_t _time_t::trunc2localday() const { return _time_t(at_time_of_day(localtime(), 0, 0, 0)); }

// The last second of the day plus one: correct also on days of 23 or 25 hours,
// where adding 86400 seconds to midnight would not be.
_time_t _time_t::nextlocalday() const {
  const _time_t last_second(at_time_of_day(localtime(), 23, 59, 59));
  return static_cast<__int64>(last_second) + 1;
}

// One second before this day's midnight lies in the previous day, whose
// midnight is then found like trunc2localday's.
_time_t _time_t::prevlocalday() const {
  const _time_t midnight = trunc2localday();
  const _time_t previous_evening = static_cast<__int64>(midnight) - 1;
  return previous_evening.trunc2localday();
}
