#include "tour.h"

#include <qz/time/log_stamps.h>
#include <qz/time/time.h>

#include <cstdio>

namespace {

std::string visible_newlines(std::string text) {
  for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) text.replace(at, 1, "\\n");
  return text;
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", value);
  return text;
}

}  // namespace

void tour_time() {
  section("Log stamps");
  show("now()", quoted(now()));
  unsigned short last_day = 0;
  show("now2(lastDay = 0): date line first", quoted(visible_newlines(now2(last_day))));
  show("now2 again the same day: time only", quoted(now2(last_day)));

  section("Calendar time");
  const _time_t stamp = _time_t::mktime(std::string("2021-10-31T11:30:00.000"));
  show("mktime(\"2021-10-31T11:30:00.000\"), UTC", std::to_string(static_cast<__int64>(stamp)));
  show("ctime() (local)", stamp.ctime());
  show("iso8601time() (UTC)", stamp.iso8601time());
  show("parsed back from its ISO text equals it",
       _time_t::mktime(stamp.iso8601time()) == stamp ? "yes" : "no");
  show("trunc2localday()", stamp.trunc2localday().ctime());
  show("nextlocalday()", stamp.nextlocalday().ctime());
  show("prevlocalday()", stamp.prevlocalday().ctime());
  show("varianttime() (days since 1899-12-30)", number(stamp.varianttime()));
  show("invalid: varianttime() / ctime()",
       number(_time_t::invalid.varianttime()) + " / " + _time_t::invalid.ctime());
  show("mktime(0.0, true) is invalid", _time_t::mktime(0.0, true).valid() ? "no" : "yes");
}
