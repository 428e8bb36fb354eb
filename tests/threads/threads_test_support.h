// Helpers shared by the thread tests: a thread class and jobs made from
// lambdas, and a recorder of what the library writes to Debug.
#pragma once

#include <qz/logging/debug_stream.h>
#include <qz/logging/global_streams.h>
#include <qz/logging/stream_writer.h>
#include <qz/sync/event.h>
#include <qz/threads/thread_class.h>
#include <qz/threads/thread_job.h>
#include <qz/threads/thread_task.h>

#include <atomic>
#include <functional>
#include <string>
#include <utility>

namespace threads_test {

// Records what reaches the Debug stream while it lives.
class DebugCapture {
 public:
  DebugCapture() : writer_(new Recorder) { Debug.AddWriter(writer_); }
  ~DebugCapture() { Debug.RemoveWriter(writer_); }
  DebugCapture(const DebugCapture&) = delete;
  DebugCapture& operator=(const DebugCapture&) = delete;

  std::string text() const {
    TDebugStreamSession hold(Debug);  // the writer is fed under the stream's lock
    return writer_->text;
  }

 private:
  struct Recorder : TStreamWriter {
    void StreamWriteString(const char* t, size_t length) override { text.append(t, length); }
    std::string text;
  };
  SmartPtr<Recorder> writer_;
};

// A TThreadClass whose body is a lambda. It notes OnException calls and
// whether the body got past its end or unwound, and stops its thread before
// its members go (as every derived class must).
class LambdaThread : public TThreadClass {
 public:
  explicit LambdaThread(std::function<void()> body) : body_(std::move(body)) {}
  ~LambdaThread() override { StopThread(10000); }

  void Execute() override {
    started.Set();
    body_();
    returned = true;
  }
  void OnException() override { ++exceptions_reported; }
  int state() const { return thread_state; }

  TEvent started;
  std::atomic<bool> returned{false};
  std::atomic<int> exceptions_reported{0};

 private:
  std::function<void()> body_;
};

class LambdaJob : public IThreadJob {
 public:
  explicit LambdaJob(std::function<void()> work) : work_(std::move(work)) {}
  void Execute() override { work_(); }

 private:
  std::function<void()> work_;
};

class LambdaTask : public TThreadTask {
 public:
  explicit LambdaTask(std::function<void()> work) : work_(std::move(work)) {}
  void Execute() override { work_(); }

 private:
  std::function<void()> work_;
};

// A number from a pool's text form, e.g. Field(pool, "Threads").
inline int Field(const SmartPtrObj& pool, const std::string& name) {
  const std::string text = pool.ToString();
  const size_t at = text.find(" " + name + "=");
  if (at == std::string::npos) return -1;
  return std::stoi(text.substr(at + name.size() + 2));
}

}  // namespace threads_test
