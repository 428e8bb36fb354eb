// Sets up the local zone for the calendar-time tests.
//
// How the zone reaches the runtime under Wine (found by experiment, Wine 8):
// - msvcrt's _tzset takes the TZ variable when it is set and parses it as
//   Windows does ("CET-1CEST"), with daylight-saving dates that are not the
//   European ones; a POSIX name such as "Europe/Berlin" is misread outright.
//   Without TZ it asks GetTimeZoneInformation.
// - Wine answers GetTimeZoneInformation from the host zone of the Unix
//   process running the program (its TZ, else /etc/localtime), per process:
//   a wineserver started under another zone does not matter. With the host
//   zone Europe/Berlin it reports "Central Europe Standard Time" with the
//   last-Sunday rules, and msvcrt then changes at the real European dates.
// - Wine copies the host environment into the program's, so the host TZ also
//   lands in msvcrt's TZ and must be removed there.
// So ctest starts this program with TZ=Europe/Berlin and the environment
// below removes TZ from the program's own environment before any test. Run by
// hand without that, the tests that need the zone skip themselves.
#include "berlin_zone.h"

#include <stdlib.h>
#include <time.h>

namespace {

class ZoneFromSystemSettings : public ::testing::Environment {
 public:
  void SetUp() override {
    _putenv("TZ=");
    _tzset();
  }
};

const ::testing::Environment* const zone_environment =
    ::testing::AddGlobalTestEnvironment(new ZoneFromSystemSettings);

bool local_is(__time64_t t, int hour, int minute, int second, int isdst) {
  tm local = {};
  if (_localtime64_s(&local, &t) != 0) return false;
  return local.tm_hour == hour && local.tm_min == minute && local.tm_sec == second && local.tm_isdst == isdst;
}

}  // namespace

bool berlin_zone_active() {
  static const bool active = local_is(1609459200, 1, 0, 0, 0) &&    // 2021-01-01 00:00:00 UTC
                             local_is(1616893199, 1, 59, 59, 0) &&  // 2021-03-28 00:59:59 UTC
                             local_is(1616893200, 3, 0, 0, 1) &&    // 2021-03-28 01:00:00 UTC
                             local_is(1635641999, 2, 59, 59, 1) &&  // 2021-10-31 00:59:59 UTC
                             local_is(1635642000, 2, 0, 0, 0);      // 2021-10-31 01:00:00 UTC
  return active;
}
