#include <qz/time/time.h>

#include <stdio.h>

namespace {
const char kIsoFormat[] = "%Y-%m-%dT%H:%M:%S.000";
}  // namespace

std::string _time_t::ctime() const {
  static const char kInvalid[] = "<invalid time>";
  if (!valid()) return kInvalid;
  char buffer[64];
  const __time64_t value = t_;
  if (_ctime64_s(buffer, sizeof buffer, &value) != 0) return kInvalid;
  std::string text(buffer);
  if (!text.empty()) text.pop_back();  // the runtime's newline
  return text;
}

// invalid is not singled out: it gets whatever text the runtime makes of its
// failed breakdown (with msvcrt, none).
std::string _time_t::iso8601time() const {
  const tm t = gmtime();
  char buffer[32];
  const size_t length = strftime(buffer, sizeof buffer, kIsoFormat, &t);
  return std::string(buffer, length);
}

_time_t _time_t::mktime(const std::string& text) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  // sscanf_s counts the six fields before it reaches the ".000" tail, so the
  // tail is not checked and "...:SS" alone parses as well.
  if (sscanf_s(text.c_str(), "%d-%d-%dT%d:%d:%d.000", &year, &month, &day, &hour, &minute, &second) != 6)
    return invalid;
  return mktime(year, month, day, hour, minute, second, true);
}
