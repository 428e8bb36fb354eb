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

TEST(DebugStreamPrintf, FormatsWithTheRuntimesRules) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  s.printf("%d|%I64d|%s|%5.2f", -7, -1234567890123LL, "t", 2.5);
  EXPECT_EQ(memory->text(), "-7|-1234567890123|t| 2.50");
}

TEST(DebugStreamPrintf, TextBeyond4095CharactersIsCutAndSends4096BytesEndingInZero) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  s.printf("%s", std::string(4095, 'x').c_str());
  s.printf("%s", std::string(5000, 'y').c_str());
  ASSERT_EQ(memory->calls.size(), 2u);
  EXPECT_EQ(memory->calls[0], std::string(4095, 'x'));
  EXPECT_EQ(memory->calls[1], std::string(4095, 'y') + '\0');
}

TEST(DebugStreamWriteDouble, WritesGFormatAndContinuesTheStatement) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  s.WriteDouble(0.25) << " and " << 1;
  s.WriteDouble(1e20);
  EXPECT_EQ(memory->text(), "0.25 and 11e+020");
}

TEST(DebugStreamDump, WritesUpperCaseHexPairsSeparatedByBlanks) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
  const unsigned char bytes[] = {0x0A, 0xFF, 0x00, 0x7c};
  s.Dump(bytes, 2) << '|';
  s.Dump(bytes, 4) << '|';
  s.Dump(bytes, 1) << '|';
  s.Dump(bytes, 0) << '|';
  s.Dump(bytes, -3) << '|';
  EXPECT_EQ(memory->text(), "0A FF|0A FF 00 7C|0A|||");
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
}

TEST(DebugStreamStamps, PiecesOfOneLineShareItsPrefix) {
  auto* memory = new MemoryWriter;
  StampedStream s{Writer(memory)};
  TDebugStreamSession(s) << "x=" << 5 << '\n';
  TDebugStreamSession(s) << "y" << '\n';
  EXPECT_TRUE(std::regex_match(memory->text(), std::regex(std::string(kDate) + kTime + "x=5\n" + kTime + "y\n")))
      << memory->text();
}

}  // namespace
