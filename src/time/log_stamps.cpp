#include <qz/time/log_stamps.h>

#include <windows.h>

#include <stdio.h>
#include <time.h>

namespace {
const size_t kStampSize = 260;
}  // namespace

std::string now() {
  const __time64_t current = _time64(nullptr);
  tm local = {};
  _localtime64_s(&local, &current);
  char buffer[kStampSize];
  // The two-digit year is the stamp's established form, kept short on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-y2k"
  const size_t length = strftime(buffer, sizeof buffer, "%d.%m.%y %H:%M:%S ", &local);
#pragma GCC diagnostic pop
  return std::string(buffer, length);
}

std::string now2(unsigned short& lastDay) {
  SYSTEMTIME st;
  GetLocalTime(&st);
  char buffer[kStampSize];
  int length;
  if (st.wDay == lastDay) {
    length = sprintf_s(buffer, sizeof buffer, "%02hd:%02hd:%02hd.%03hd ", st.wHour, st.wMinute, st.wSecond,
                       st.wMilliseconds);
  } else {
    length = sprintf_s(buffer, sizeof buffer, "%02hd.%02hd.%04hd\n%02hd:%02hd:%02hd.%03hd ", st.wDay, st.wMonth,
                       st.wYear, st.wHour, st.wMinute, st.wSecond, st.wMilliseconds);
    lastDay = st.wDay;
  }
  return std::string(buffer, length > 0 ? static_cast<size_t>(length) : 0);
}
