// _time_t: calendar time with one-second resolution.
//
// One signed 64-bit count of seconds since 1970-01-01 00:00:00 UTC. The value
// -1 is reserved as _time_t::invalid, which every failing producer yields; a
// default-constructed time is the epoch, not invalid. The value carries no
// zone: "local" only says how a member breaks the value down or builds it,
// using the C runtime's notion of the local zone.
//
// Conversions to and from the Windows forms (SYSTEMTIME, FILETIME, automation
// dates) that the system refuses raise EGeneric ("Condition not meet");
// producers that are given unrepresentable input yield invalid instead.
//
// Thread safety: a plain value type without shared state; every member may be
// called on any thread. Distinct objects may be used on any threads, one
// object is not to be written while another thread reads it.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>

#include <time.h>

#include <string>

class QZ_API _time_t {
 public:
  static const _time_t invalid;

  constexpr _time_t(__int64 t = 0) noexcept : t_(t) {}
  constexpr _time_t(int t) noexcept : t_(t) {}
  // The local mktime of the structure. The runtime normalises the caller's
  // structure in place, as a direct mktime call would. A null pointer yields
  // invalid.
  _time_t(const tm& local);
  _time_t(const tm* local);
  // From the date member of `date`, whatever its type tag says; see
  // mktime(double, bool).
  _time_t(const _variant_t& date, bool utc);

  _time_t(const _time_t&) noexcept = default;
  _time_t& operator=(const _time_t&) noexcept = default;
  _time_t& operator=(const __int64& t) noexcept {
    t_ = t;
    return *this;
  }
  _time_t& operator=(const tm& local);
  _time_t& operator=(const tm* local);

  // Comparisons and ordering go through this conversion.
  constexpr operator __int64() const noexcept { return t_; }
  constexpr bool valid() const noexcept { return t_ != -1; }

  // The current time.
  static _time_t time();
  // Local time; month and day count from 1. Out-of-range fields are
  // normalised the way mktime does.
  static _time_t mktime(int year, int month, int day, int hour, int minute, int second);
  // From the date and time fields; milliseconds and day of week are ignored.
  static _time_t mktime(const _SYSTEMTIME& st, bool utc);
  static _time_t mktime(const _FILETIME& ft, bool utc);
  // An automation date (days since 1899-12-30). 0.0, which stands for "no
  // date", and dates the system cannot convert yield invalid. Milliseconds
  // are dropped.
  static _time_t mktime(double date, bool utc);
  // Parses iso8601time()'s form "YYYY-MM-DDTHH:MM:SS" as UTC; anything after
  // the seconds is ignored. Text without all six fields yields invalid.
  static _time_t mktime(const std::string& text);
  // The UTC conversion of the structure, normalised in place.
  static _time_t mkgmtime(const tm& utc);
  static _time_t mkgmtime(const tm* utc);

  // Breakdowns. Values the runtime cannot break down (negative ones, invalid
  // included) give whatever the runtime leaves in the structure.
  tm gmtime() const;
  tm localtime() const;
  // wDayOfWeek and wMilliseconds are always 0.
  _SYSTEMTIME systemtime() const;
  _SYSTEMTIME localsystemtime() const;
  _FILETIME filetime() const;
  // The automation date of the UTC time; invalid gives 0.0, the inverse of
  // mktime(0.0, ...).
  double varianttime() const;
  // The automation date of the local time. Unlike varianttime() this does not
  // map invalid to 0.0: invalid is converted like any other value (and the
  // system refuses its breakdown).
  double localvarianttime() const;

  // Local midnights: at the start of this value's local day, of the next and
  // of the previous one. Days of 23 or 25 hours are handled.
  _time_t trunc2localday() const;
  _time_t nextlocalday() const;
  _time_t prevlocalday() const;

  // The C runtime's ctime text (local time) without its trailing newline, or
  // "<invalid time>".
  std::string ctime() const;
  // UTC as "YYYY-MM-DDTHH:MM:SS.000" (literal milliseconds, no zone letter).
  std::string iso8601time() const;

 protected:
  // The fields as given (month and day from 1); utc selects the UTC
  // conversion instead of the local one.
  static _time_t mktime(int year, int month, int day, int hour, int minute, int second, bool utc);
  // Does nothing: a _time_t never changes on its own.
  void update_time() {}

 private:
  __int64 t_;
};
