#include <qz/time/log_stamps.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

// '#' stands for a digit, every other character for itself.
bool matches(const std::string& text, const std::string& mask) {
  if (text.size() != mask.size()) return false;
  for (size_t i = 0; i < mask.size(); ++i) {
    const bool ok = mask[i] == '#' ? (text[i] >= '0' && text[i] <= '9') : text[i] == mask[i];
    if (!ok) return false;
  }
  return true;
}

TEST(LogStamps, NowIsShortDateAndTimeWithTrailingBlank) {
  const std::string stamp = now();
  EXPECT_TRUE(matches(stamp, "##.##.## ##:##:## ")) << stamp;
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

    EXPECT_TRUE(matches(first, "##.##.####\n##:##:##.### ")) << first;
    char date[16];
    sprintf_s(date, sizeof date, "%02hd.%02hd.%04hd\n", before.wDay, before.wMonth, before.wYear);
    EXPECT_EQ(first.substr(0, 11), date);
    EXPECT_TRUE(matches(second, "##:##:##.### ")) << second;
    EXPECT_EQ(last_day, before.wDay);
    return;
  }
  FAIL() << "the day kept changing";
}

}  // namespace
