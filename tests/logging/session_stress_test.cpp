// Several threads writing through sessions at once: every statement must
// reach the writer whole.
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using logging_test::MemoryWriter;

const int kThreads = 4;
const int kStatements = 300;
const DWORD kBoundMs = 120000;

struct Shared {
  MemoryWriter* memory = new MemoryWriter;
  TDebugStream stream{SmartPtr<TStreamWriter>(memory)};
  HANDLE start = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

struct Job {
  Shared* shared;
  int id;
};

// Many small pieces per statement, so that a statement not held together
// would be torn apart by the others.
DWORD WINAPI Write(void* argument) {
  const Job* job = static_cast<Job*>(argument);
  const std::string payload(16, static_cast<char>('a' + job->id));
  WaitForSingleObject(job->shared->start, kBoundMs);
  for (int i = 0; i < kStatements; ++i)
    TDebugStreamSession(job->shared->stream) << "thread " << job->id << " line " << i << ' ' << payload << " end"
                                             << '\n';
  return 0;
}

std::string ExpectedLine(int id, int i) {
  return "thread " + std::to_string(id) + " line " + std::to_string(i) + ' ' +
         std::string(16, static_cast<char>('a' + id)) + " end";
}

TEST(DebugStreamSessionStress, ConcurrentStatementsArriveWholeAndInEachThreadsOrder) {
  // Heap-held and left behind when a thread overruns the bound, since the
  // stray thread would still use it.
  auto* shared = new Shared;
  Job jobs[kThreads];
  HANDLE threads[kThreads];
  for (int t = 0; t < kThreads; ++t) {
    jobs[t] = {shared, t};
    threads[t] = CreateThread(nullptr, 0, &Write, &jobs[t], 0, nullptr);
    ASSERT_NE(threads[t], nullptr);
  }
  SetEvent(shared->start);
  const DWORD waited = WaitForMultipleObjects(kThreads, threads, TRUE, kBoundMs);
  for (HANDLE thread : threads) CloseHandle(thread);
  ASSERT_EQ(waited, WAIT_OBJECT_0) << "writers did not finish within the bound";

  std::istringstream lines(shared->memory->text());
  std::string line;
  int next[kThreads] = {};
  int count = 0;
  while (std::getline(lines, line)) {
    ++count;
    const int id = line.size() > 7 ? line[7] - '0' : -1;
    ASSERT_TRUE(id >= 0 && id < kThreads) << "torn line: " << line;
    ASSERT_EQ(line, ExpectedLine(id, next[id])) << "torn line";
    ++next[id];
  }
  EXPECT_EQ(count, kThreads * kStatements);
  CloseHandle(shared->start);
  delete shared;
}

}  // namespace
