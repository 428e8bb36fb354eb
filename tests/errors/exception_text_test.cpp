// Exceptions logged from several threads at once: every thread logs its own
// exception's text, however long the others' are.
#include <qz/errors/generic.h>
#include <qz/logging/debug_stream.h>

#include "logging/logging_test_support.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <vector>

namespace {

// Thread t's message: its own letter, from 1 to about 64 KB long.
std::string MessageOf(int thread) {
  static const size_t kLengths[] = {1, 70, 4000, 65000};
  return std::string(kLengths[thread % 4], static_cast<char>('a' + thread));
}

TEST(ExceptionText, ThreadsLoggingExceptionsThroughTheirOwnStreamsLogTheirOwnTexts) {
  const int kThreads = 4;
  const int kStatements = 300;
  std::vector<logging_test::MemoryWriter*> memories;
  std::vector<std::unique_ptr<TDebugStream>> streams;
  for (int t = 0; t < kThreads; ++t) {
    memories.push_back(new logging_test::MemoryWriter);
    streams.push_back(std::make_unique<TDebugStream>(SmartPtr<TStreamWriter>(memories.back())));
  }
  HANDLE start = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  std::vector<std::unique_ptr<qz_test::WorkerThread>> workers;
  for (int t = 0; t < kThreads; ++t)
    workers.push_back(std::make_unique<qz_test::WorkerThread>([&, t] {
      const EGeneric error({"Text", MessageOf(t)});
      WaitForSingleObject(start, 10000);
      for (int i = 0; i < kStatements; ++i) TDebugStreamSession(*streams[t]) << error << '\n';
    }));
  SetEvent(start);
  for (auto& worker : workers) ASSERT_TRUE(worker->Join(120000));
  CloseHandle(start);

  for (int t = 0; t < kThreads; ++t) {
    std::istringstream lines(memories[t]->text());
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
      ++count;
      ASSERT_TRUE(line == "EGeneric:" + MessageOf(t)) << "thread " << t << " logged another text";
    }
    EXPECT_EQ(count, kStatements);
  }
}

}  // namespace
