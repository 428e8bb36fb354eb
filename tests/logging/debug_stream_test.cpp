// A debug stream: its writer list, copies and letter flags; WriteString,
// printf, WriteDouble, Dump and the time prefixes of lines.
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>

namespace {

using namespace logging_test;

using Writer = SmartPtr<TStreamWriter>;
using WriterList = std::vector<Writer>;

// A stream with one writer that keeps every call.
class DebugStream : public testing::Test {
 protected:
  ~DebugStream() noexcept override {}
  MemoryWriter* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
};

// RemoveWriter takes the first entry of that writer, or the last entry when
// the writer is absent; ChangeWriter leaves exactly the new one; += appends
// the other stream's writers, and doubles a stream added to itself.
TEST(DebugStreamWriters, RemoveChangeClearAndPlusEqualsEditTheListAsDesigned) {
  Writer a(new MemoryWriter), b(new MemoryWriter), c(new MemoryWriter);
  TDebugStream s(a, b, a);
  s.RemoveWriter(a);
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{b, a}));
  s.RemoveWriter(c);
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{b}));
  s.AddWriter(a);
  s.ChangeWriter(c);
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{c}));
  TDebugStream other(a, b);
  s += other;
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{c, a, b}));
  other += other;
  EXPECT_EQ(Peek::WritersOf(other), (WriterList{a, b, a, b}));
  s.ClearWriters();
  EXPECT_TRUE(Peek::WritersOf(s).empty());
  EXPECT_FALSE(s.GetEnabled());
}

TEST_F(DebugStream, CopiesAndAssignmentsShareWritersFlagsAndTheMutex) {
  s.SetEnabled('Q', true);
  TDebugStream copy(s);
  TDebugStream assigned(new MemoryWriter);
  assigned = s;
  EXPECT_EQ(Peek::WritersOf(assigned), Peek::WritersOf(s));
  EXPECT_TRUE(copy.GetEnabled('Q'));
  EXPECT_NE(Peek::MutexOf(copy), Peek::MutexOf(s));  // a duplicated handle...
  {
    TDebugStreamSession hold(s);
    EXPECT_FALSE(FreeForOtherThreads(copy));  // ...of the same mutex
    EXPECT_FALSE(FreeForOtherThreads(assigned));
    copy.WriteString("c", 1);  // re-entrant for this thread
  }
  EXPECT_TRUE(FreeForOtherThreads(copy));
  EXPECT_EQ(memory->text(), "c");
}

// Capital letters only, readable once a writer exists; others throw the
// bitset's out_of_range.
TEST(DebugStreamFlags, FlagsAreCapitalLettersOnlyAndNeedAWriter) {
  TDebugStream s;
  s.SetEnabled('A', true);
  EXPECT_FALSE(s.GetEnabled('A'));  // no writer yet
  s.AddWriter(new MemoryWriter);
  EXPECT_TRUE(s.GetEnabled());
  EXPECT_TRUE(s.GetEnabled('A'));
  EXPECT_FALSE(s.GetEnabled('a'));  // read as unset, though setting it throws
  s.SetEnabled('Z', true);
  EXPECT_TRUE(s.GetEnabled('Z'));
  for (char c : {'a', '@', '['}) {
    try {
      s.SetEnabled(c, true);
      ADD_FAILURE() << "no exception for " << c;
    } catch (const std::out_of_range& e) {
      EXPECT_STREQ(e.what(), "invalid bitset<N> position");
    }
  }
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

// The list takes a null writer as it takes any other, but writing passes
// over it: a logging call never crashes, and the real writers get the text.
TEST(DebugStreamWrite, NullWritersAreKeptButSkippedWhenWriting) {
  auto* first = new MemoryWriter;
  auto* last = new MemoryWriter;
  TDebugStream s{Writer()};
  s.AddWriter(first);
  s.AddWriter(nullptr);
  s.AddWriter(last);
  EXPECT_EQ(Peek::WritersOf(s).size(), 4u);
  s.WriteString("x", 1);
  TDebugStreamSession(s) << "y" << 2;
  s.printf("%d", 3);
  EXPECT_EQ(first->text(), "xy23");
  EXPECT_EQ(last->text(), "xy23");
}

// WriteString passes bytes as given (zeros too) and skips null or empty text.
// printf: the runtime's rules (%I64d), and the 4096-byte buffer: 4095
// characters fit, longer text is cut and the full buffer goes out, its zero included.
TEST_F(DebugStream, WriteStringAndPrintfCutBeyond4095Characters) {
  s.WriteString(nullptr, 5);
  s.WriteString("abc", 0);
  s.WriteString("a\0b", 3);
  s.printf("%d|%I64d|%s|%5.2f", -7, -1234567890123LL, "t", 2.5);
  s.printf("%s", std::string(4095, 'x').c_str());
  s.printf("%s", std::string(5000, 'y').c_str());
  EXPECT_EQ(memory->calls, (std::vector<std::string>{std::string("a\0b", 3), "-7|-1234567890123|t| 2.50",
                                                     std::string(4095, 'x'), std::string(4095, 'y') + '\0'}));
}

TEST_F(DebugStream, WriteDoubleAndDumpWriteGFormatAndUpperCaseHexPairsAndContinueTheStatement) {
  s.WriteDouble(0.25) << " and " << 1;
  s.WriteDouble(1e20) << '|';
  const unsigned char bytes[] = {0x0A, 0xFF, 0x00, 0x7c};
  for (int length : {4, 0, -3}) s.Dump(bytes, length) << '|';
  EXPECT_EQ(memory->text(), "0.25 and 11e+020|0A FF 00 7C|||");
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
