#include <qz/time/log_stamps.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <regex>
#include <string>

namespace {

bool matches(const std::string& text, const char* pattern) { return std::regex_match(text, std::regex(pattern)); }

TEST(LogStamps, NowIsShortDateAndTimeWithTrailingBlank) {
  const std::string stamp = now();
  EXPECT_TRUE(matches(stamp, R"(\d\d\.\d\d\.\d\d \d\d:\d\d:\d\d )")) << stamp;
}

TEST(LogStamps, Now2PrintsTheDateLineOnlyOnTheFirstCallOfADay) {
  // Retried if the day happens to change between the calls.
  for (int attempt = 0; attempt < 3; ++attempt) {
    SYSTEMTIME before;
    GetLocalTime(&before);
    unsigned short last_day = 0;
    const std::string first = now2(last_day);
    const std::string second = now2(last_day);
    SYSTEMTIME after;
    GetLocalTime(&after);
    if (before.wDay != after.wDay) continue;

    EXPECT_TRUE(matches(first, R"(\d\d\.\d\d\.\d{4}\n\d\d:\d\d:\d\d\.\d{3} )")) << first;
    char date[16];
    sprintf_s(date, sizeof date, "%02hd.%02hd.%04hd\n", before.wDay, before.wMonth, before.wYear);
    EXPECT_EQ(first.substr(0, 11), date);
    EXPECT_TRUE(matches(second, R"(\d\d:\d\d:\d\d\.\d{3} )")) << second;
    EXPECT_EQ(last_day, before.wDay);
    return;
  }
  FAIL() << "the day kept changing";
}

}  // namespace
