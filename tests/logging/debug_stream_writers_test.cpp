// The writer list, copies of streams and the letter flags.
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using logging_test::FreeForOtherThreads;
using logging_test::MemoryWriter;
using logging_test::Peek;
using logging_test::TaggingWriter;

using Writer = SmartPtr<TStreamWriter>;
using WriterList = std::vector<Writer>;

TEST(DebugStreamWriters, TextReachesEveryWriterInInsertionOrderIncludingRepeats) {
  std::string journal;
  Writer a(new TaggingWriter(journal, 'A'));
  TDebugStream s(a, new TaggingWriter(journal, 'B'), new TaggingWriter(journal, 'C'));
  s.AddWriter(a);
  s.WriteString("x", 1);
  EXPECT_EQ(journal, "A[x]B[x]C[x]A[x]");
}

// RemoveWriter takes the first entry of that writer, or the last entry when
// the writer is absent; ChangeWriter leaves exactly the new one.
TEST(DebugStreamWriters, RemoveChangeAndClearEditTheListAsDesigned) {
  Writer a(new MemoryWriter), b(new MemoryWriter), c(new MemoryWriter);
  TDebugStream s(a, b, a);
  s.RemoveWriter(a);
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{b, a}));
  s.RemoveWriter(c);
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{b}));
  s.AddWriter(a);
  s.ChangeWriter(c);
  EXPECT_EQ(Peek::WritersOf(s), (WriterList{c}));
  s.ClearWriters();
  EXPECT_TRUE(Peek::WritersOf(s).empty());
  EXPECT_FALSE(s.GetEnabled());
}

TEST(DebugStreamWriters, PlusEqualsAppendsTheOtherStreamsWritersAndDoublesItself) {
  Writer a(new MemoryWriter), b(new MemoryWriter), c(new MemoryWriter);
  TDebugStream mine(a);
  TDebugStream other(b, c);
  mine += other;
  EXPECT_EQ(Peek::WritersOf(mine), (WriterList{a, b, c}));
  EXPECT_EQ(Peek::WritersOf(other), (WriterList{b, c}));
  other += other;
  EXPECT_EQ(Peek::WritersOf(other), (WriterList{b, c, b, c}));
}

TEST(DebugStreamCopy, CopiesAndAssignmentsShareWritersFlagsAndTheMutex) {
  auto* memory = new MemoryWriter;
  TDebugStream s{Writer(memory)};
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
  s.SetEnabled('A', false);
  EXPECT_FALSE(s.GetEnabled('A'));
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

}  // namespace
