// The SYSTEMTIME, FILETIME and automation-date forms of _time_t.
#include <qz/core/throw.h>
#include <qz/time/time.h>

namespace {

// The library's assertion, raised where the system refuses a conversion. The
// condition, line and function are fixed data identifying each check, so that
// what callers see does not move when this file is edited.
[[noreturn]] void throw_time_assertion(const char* condition, int line, const char* function) {
  qz_throw_assertion(condition, "Time", line, function);
}

const char kSystemTimeToVariantTime[] = "SystemTimeToVariantTime( &SystemTime, &VariantTime ) != 0";

_SYSTEMTIME system_time_of(const tm& t) {
  _SYSTEMTIME st = {};
  st.wYear = static_cast<WORD>(t.tm_year + 1900);
  st.wMonth = static_cast<WORD>(t.tm_mon + 1);
  st.wDay = static_cast<WORD>(t.tm_mday);
  st.wHour = static_cast<WORD>(t.tm_hour);
  st.wMinute = static_cast<WORD>(t.tm_min);
  st.wSecond = static_cast<WORD>(t.tm_sec);
  return st;
}

double variant_time_of(_SYSTEMTIME st, int line, const char* function) {
  double date = 0.0;
  if (SystemTimeToVariantTime(&st, &date) == 0) throw_time_assertion(kSystemTimeToVariantTime, line, function);
  return date;
}

}  // namespace

_time_t::_time_t(const _variant_t& date, bool utc) : t_(mktime(V_DATE(&date), utc)) {}

_time_t _time_t::mktime(const _SYSTEMTIME& st, bool utc) {
  return mktime(st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond, utc);
}

_time_t _time_t::mktime(const _FILETIME& ft, bool utc) {
  _SYSTEMTIME st;
  if (!FileTimeToSystemTime(&ft, &st))
    throw_time_assertion("FileTimeToSystemTime( &FileTime, &SystemTime )", 139, "_time_t::mktime");
  return mktime(st, utc);
}

_time_t _time_t::mktime(double date, bool utc) {
  if (date == 0.0) return invalid;  // the automation epoch means "no date"
  _SYSTEMTIME st;
  if (VariantTimeToSystemTime(date, &st) != 1) return invalid;
  return mktime(st, utc);
}

_SYSTEMTIME _time_t::systemtime() const { return system_time_of(gmtime()); }

_SYSTEMTIME _time_t::localsystemtime() const { return system_time_of(localtime()); }

_FILETIME _time_t::filetime() const {
  const _SYSTEMTIME st = systemtime();
  _FILETIME ft;
  if (SystemTimeToFileTime(&st, &ft) == 0)
    throw_time_assertion("SystemTimeToFileTime( &SystemTime, &FileTime ) != 0", 284, "_time_t::filetime");
  return ft;
}

double _time_t::varianttime() const {
  if (!valid()) return 0.0;
  return variant_time_of(systemtime(), 198, "_time_t::varianttime");
}

// Deliberately no test for invalid here, unlike varianttime(): invalid goes to
// the conversion like any other value, and the system refuses the -1 fields
// the runtime leaves for it, so the local form never reports "no date".
double _time_t::localvarianttime() const {
  return variant_time_of(localsystemtime(), 211, "_time_t::localvarianttime");
}
