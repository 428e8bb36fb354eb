#include <qz/time/time.h>

#include <time.h>

const _time_t _time_t::invalid(static_cast<__int64>(-1));

std::string _time_t::ctime() const {
  static const char kInvalid[] = "<invalid time>";
  if (!valid()) return kInvalid;
  char buffer[64];
  __time64_t t = t_;
  if (_ctime64_s(buffer, sizeof buffer, &t) != 0) return kInvalid;
  std::string text(buffer);
  if (!text.empty()) text.pop_back();  // the runtime's newline
  return text;
}
