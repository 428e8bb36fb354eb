// The local zone the calendar-time tests pin their local results in.
#pragma once

#include <gtest/gtest.h>

// True when the C runtime's local zone behaves as Europe/Berlin: CET/CEST
// with the 2021 changes at 2021-03-28 and 2021-10-31, 01:00 UTC.
bool berlin_zone_active();

#define SKIP_UNLESS_BERLIN_ZONE()                                                                 \
  if (berlin_zone_active()) {                                                                     \
  } else                                                                                          \
    GTEST_SKIP() << "the local zone is not Europe/Berlin with European daylight saving; ctest runs " \
                    "this program with TZ=Europe/Berlin for Wine to derive the Windows zone from"
