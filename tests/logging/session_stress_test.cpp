// Several threads writing through sessions at once: every statement must
// reach the writer whole.
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"
#include "support/raw_event.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace {

using logging_test::MemoryWriter;

const int kThreads = 4;
const int kStatements = 300;
const DWORD kBoundMs = 120000;

std::string Line(int id, int i) {
  return "thread " + std::to_string(id) + " line " + std::to_string(i) + ' ' +
         std::string(16, static_cast<char>('a' + id)) + " end";
}

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
    ASSERT_EQ(line, Line(id, next[id]++)) << "torn line";
  }
  EXPECT_EQ(count, kThreads * kStatements);
  delete stream;
}

}  // namespace
