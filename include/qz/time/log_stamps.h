// Time-stamp prefixes for log lines, in local time.
//
// Thread safety: both functions may be called on any thread; now2 keeps its
// state only in the caller's variable, so each log stream passes its own.
#pragma once

#include <qz/export.h>

#include <string>

// "DD.MM.YY HH:MM:SS " (note the trailing blank before the message).
QZ_API std::string now();

// "HH:MM:SS.mmm ", preceded by the date line "DD.MM.YYYY\n" when the day of
// the month differs from `lastDay`, which is then updated. Start with
// lastDay = 0 to get the date on the first call. Only the day of the month is
// compared, so two calls exactly whole months apart print no date line.
QZ_API std::string now2(unsigned short& lastDay);
