// What each insertion into a session writes, and how long a session holds
// its stream, also against other threads.
#include <qz/errors/exceptions.h>
#include <qz/logging/debug_stream.h>
#include <qz/logging/debug_writer.h>

#include "logging/logging_test_support.h"
#include "support/raw_event.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <vector>

namespace {

using namespace logging_test;

// What inserting `v` alone writes.
template <class T>
std::string Inserted(const T& v) {
  auto* memory = new MemoryWriter;
  TDebugStream s{SmartPtr<TStreamWriter>(memory)};
  TDebugStreamSession(s) << v;
  return memory->text();
}

struct Thing : SmartPtrObj {};

// Wide text is written narrow, null text pointers as "<null>", numbers in
// their printf forms (%u, %d, %I64d, %I64u, %g), objects and values in their
// text forms; an exception shows its dynamic type, and a message of several
// lines starts on a line of its own.
TEST(DebugStreamSession, EachKindIsWrittenInItsTextForm) {
  EXPECT_EQ(Inserted(static_cast<const wchar_t*>(nullptr)), "<null>");
  EXPECT_EQ(Inserted(std::wstring(L"wide")), "wide");
  EXPECT_EQ(Inserted(_bstr_t()), "");
  EXPECT_EQ(Inserted(static_cast<unsigned char>(200)), "200");
  EXPECT_EQ(Inserted(4000000000ul), "4000000000");
  EXPECT_EQ(Inserted(-1234567890123LL), "-1234567890123");
  EXPECT_EQ(Inserted(18446744073709551615ULL), "18446744073709551615");
  EXPECT_EQ(Inserted(123456789.0), "1.23457e+008");
  EXPECT_EQ(Inserted(false), "false");
  const _time_t stamp = _time_t::mktime(2021, 10, 31, 11, 30, 0);
  EXPECT_EQ(Inserted(stamp), stamp.ctime());
  SmartPtr<Thing> thing(new Thing);
  EXPECT_EQ(Inserted(thing), thing->ToString());  // through the pointer
  EXPECT_EQ(Inserted(static_cast<const SmartPtrObj*>(nullptr)), "<NULL>");
  EXPECT_EQ(Inserted(_value_t(std::vector<int>{1, 2})), "{1,2}");
  const EGeneric single(EGeneric::value_pair("Text", _value_t("boom")));
  EXPECT_EQ(Inserted(static_cast<const std::exception&>(single)), "EGeneric:boom");
  const ESystemException system(5);
  ASSERT_NE(std::string(system.what()).find('\n'), std::string::npos);
  EXPECT_EQ(Inserted(system), "ESystemException:\n" + std::string(system.what()));
}

// One writer call per piece, in order, no line end added, each zero-terminated
// at its length (a view into a longer text is copied), as the debugger writer,
// which sends everything up to the zero, needs.
TEST(DebugStreamSession, PiecesGoOutInOrderEachZeroTerminated) {
  DebuggerOutput debugger;
  TDebugStream s(new TDebugWriter);
  const char letters[] = "abcdef";
  TDebugStreamSession(s) << const_string(letters, 3) << 'x' << 7 << std::string("s") << L"w" << true;
  TDebugStreamSession(s) << '\n';
  EXPECT_EQ(debugger.texts, (std::vector<std::string>{"abc", "x", "7", "s", "w", "true", "\n"}));
}

TEST(DebugStreamSession, HoldsTheStreamFromCreationToEnd) {
  TDebugStream s(new MemoryWriter);
  EXPECT_TRUE(FreeForOtherThreads(s));
  {
    TDebugStreamSession session(s);
    session << "a";
    {
      TDebugStreamSession copy(session);
      TDebugStreamSession nested(s);
    }
    EXPECT_FALSE(FreeForOtherThreads(s));  // the copies' holds were extra ones
  }
  EXPECT_TRUE(FreeForOtherThreads(s));
}

// Several threads writing through sessions at once: every statement must
// reach the writer whole.
const int kThreads = 4, kStatements = 300;
const DWORD kBoundMs = 120000;

TEST(DebugStreamSessionStress, ConcurrentStatementsArriveWholeAndInEachThreadsOrder) {
  // Heap-held and left behind when a thread overruns the bound, since the
  // stray thread would still use it.
  auto* memory = new MemoryWriter;
  auto* stream = new TDebugStream(SmartPtr<TStreamWriter>(memory));
  {
    qz_test::RawEvent start;
    std::vector<std::unique_ptr<qz_test::WorkerThread>> threads;
    // Many small pieces per statement, so that a statement not held together
    // would be torn apart by the others.
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back(new qz_test::WorkerThread([stream, t, start = start.h] {
        const std::string payload(16, static_cast<char>('a' + t));
        WaitForSingleObject(start, kBoundMs);
        for (int i = 0; i < kStatements; ++i)
          TDebugStreamSession(*stream) << "thread " << t << " line " << i << ' ' << payload << " end" << '\n';
      }));
    SetEvent(start.h);
    for (auto& thread : threads) ASSERT_TRUE(thread->Join(kBoundMs)) << "writers did not finish within the bound";
  }
  std::istringstream lines(memory->text());
  std::string line;
  int next[kThreads] = {};
  int count = 0;
  while (std::getline(lines, line)) {
    ++count;
    const int id = line.size() > 7 ? line[7] - '0' : -1;
    ASSERT_TRUE(id >= 0 && id < kThreads) << "torn line: " << line;
    ASSERT_EQ(line, "thread " + std::to_string(id) + " line " + std::to_string(next[id]++) + ' ' +
                        std::string(16, static_cast<char>('a' + id)) + " end");
  }
  EXPECT_EQ(count, kThreads * kStatements);
  delete stream;
}

}  // namespace
