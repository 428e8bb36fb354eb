// WriteString, printf, WriteDouble, Dump and the time prefixes of lines.
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>

namespace {

using logging_test::FreeForOtherThreads;
using logging_test::MemoryWriter;
using logging_test::StampedStream;
using logging_test::ThrowingWriter;

using Writer = SmartPtr<TStreamWriter>;

TEST(DebugStreamWrite, NullTextOrZeroLengthReachesNoWriter) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  s.WriteString(nullptr, 5);
  s.WriteString("abc", 0);
  EXPECT_TRUE(memory->calls.empty());
  s.WriteString("a\0b", 3);
  ASSERT_EQ(memory->calls.size(), 1u);
  EXPECT_EQ(memory->calls[0], std::string("a\0b", 3));
}

TEST(DebugStreamWrite, WriterFailurePassesOutAndReleasesTheLock) {
  auto* memory = new MemoryWriter;
  TDebugStream s(memory, new ThrowingWriter, memory);
  EXPECT_THROW(s.WriteString("x", 1), std::runtime_error);
  EXPECT_TRUE(FreeForOtherThreads(s));
  EXPECT_THROW(TDebugStreamSession(s) << "y", std::runtime_error);
  EXPECT_TRUE(FreeForOtherThreads(s));
  EXPECT_EQ(memory->text(), "xy");  // the writers before the failing one got it
}

// The runtime's rules (%I64d), and the 4096-byte buffer: 4095 characters
// fit, longer text is cut and the full buffer goes out, its zero included.
TEST(DebugStreamPrintf, FormatsWithTheRuntimesRulesAndCutsBeyond4095Characters) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  s.printf("%d|%I64d|%s|%5.2f", -7, -1234567890123LL, "t", 2.5);
  s.printf("%s", std::string(4095, 'x').c_str());
  s.printf("%s", std::string(5000, 'y').c_str());
  EXPECT_EQ(memory->calls, (std::vector<std::string>{"-7|-1234567890123|t| 2.50", std::string(4095, 'x'),
                                                     std::string(4095, 'y') + '\0'}));
}

TEST(DebugStreamWriteDoubleAndDump, WriteGFormatAndUpperCaseHexPairsAndContinueTheStatement) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  s.WriteDouble(0.25) << " and " << 1;
  s.WriteDouble(1e20) << '|';
  const unsigned char bytes[] = {0x0A, 0xFF, 0x00, 0x7c};
  for (int length : {2, 4, 1, 0, -3}) s.Dump(bytes, length) << '|';
  EXPECT_EQ(memory->text(), "0.25 and 11e+020|0A FF|0A FF 00 7C|0A|||");
}

// "HH:MM:SS.mmm " and the date line that the first prefix carries.
const char kTime[] = R"(\d\d:\d\d:\d\d\.\d\d\d )";
const char kDate[] = R"(\d\d\.\d\d\.\d\d\d\d\n)";

TEST(DebugStreamStamps, FirstPrefixCarriesTheDateAndLaterOnesTheTimeOnly) {
  auto* memory = new MemoryWriter;
  StampedStream s{Writer(memory)};
  s.WriteString("a\nb\n", 4);
  s.WriteString("c", 1);
  const std::string text = memory->text();
  EXPECT_TRUE(std::regex_match(text, std::regex(std::string(kDate) + kTime + "a\n" + kTime + "b\n" + kTime + "c")))
      << text;
  // The date is today's, and the line feed that ended the first write left
  // the prefix for the next one.
  SYSTEMTIME today;
  GetLocalTime(&today);
  char date[16];
  sprintf_s(date, sizeof date, "%02hu.%02hu.%04hu\n", today.wDay, today.wMonth, today.wYear);
  EXPECT_EQ(text.substr(0, 11), date);
  ASSERT_EQ(memory->calls.size(), 2u);
  EXPECT_EQ(memory->calls[0].back(), '\n');
  // Pieces of one statement share one prefix.
  StampedStream pieces{Writer(memory = new MemoryWriter)};
  TDebugStreamSession(pieces) << "x=" << 5 << '\n';
  TDebugStreamSession(pieces) << "y" << '\n';
  EXPECT_TRUE(std::regex_match(memory->text(), std::regex(std::string(kDate) + kTime + "x=5\n" + kTime + "y\n")))
      << memory->text();
}

}  // namespace
