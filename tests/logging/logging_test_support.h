// Helpers shared by the logging tests: writers that record what they get,
// access to a stream's protected parts, the debugger's view and other threads.
#pragma once

#include <qz/logging/debug_stream.h>
#include <qz/logging/file_writer.h>

#include <windows.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace logging_test {

// Keeps every text it receives, one entry per call. Streams call it under
// their lock, so it needs none of its own.
struct MemoryWriter : TStreamWriter {
  void StreamWriteString(const char* text, size_t length) override { calls.emplace_back(text, length); }
  std::string text() const {
    std::string all;
    for (const auto& call : calls) all += call;
    return all;
  }

  std::vector<std::string> calls;
};

struct ThrowingWriter : TStreamWriter {
  void StreamWriteString(const char*, size_t) override { throw std::runtime_error("writer failed"); }
};

// A stream that stamps its lines, as code deriving from TDebugStream may.
struct StampedStream : TDebugStream {
  explicit StampedStream(SmartPtr<TStreamWriter> w) : TDebugStream(w) { stamp_lines = true; }
};

// The protected parts of streams and writers, read through a derived class.
struct Peek : TDebugStream {
  static const std::vector<SmartPtr<TStreamWriter>>& WritersOf(const TDebugStream& s) {
    return s.*(&Peek::writers);
  }
  static HANDLE MutexOf(const TDebugStream& s) { return static_cast<HANDLE>(s.*(&Peek::lock)); }
};

struct PeekFile : TFileWriter {
  static const std::string& NameOf(const TFileWriter& w) { return w.*(&PeekFile::name); }
};

// Whether another thread could take the stream's kernel mutex right now (it
// gives the mutex straight back). The wait does not block, so the join is bounded.
inline bool FreeForOtherThreads(const TDebugStream& s) {
  bool taken = false;
  std::thread([mutex = Peek::MutexOf(s), &taken] {
    const DWORD result = WaitForSingleObject(mutex, 0);
    taken = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    if (taken) ReleaseMutex(mutex);
  }).join();
  return taken;
}

// Catches what OutputDebugStringA hands the debugger on this thread while it
// lives: the system raises a first-chance exception carrying the text, which a
// vectored handler sees before anybody else.
class DebuggerOutput {
 public:
  DebuggerOutput() : handler_(AddVectoredExceptionHandler(1, &DebuggerOutput::Catch)) { current_ = this; }
  ~DebuggerOutput() {
    RemoveVectoredExceptionHandler(handler_);
    current_ = nullptr;
  }
  std::vector<std::string> texts;

 private:
  static LONG CALLBACK Catch(EXCEPTION_POINTERS* info) {
    const EXCEPTION_RECORD* record = info->ExceptionRecord;
    if (record->ExceptionCode == DBG_PRINTEXCEPTION_C && current_ && record->NumberParameters >= 2 &&
        GetCurrentThreadId() == current_->thread_)
      current_->texts.emplace_back(reinterpret_cast<const char*>(record->ExceptionInformation[1]));
    return EXCEPTION_CONTINUE_SEARCH;
  }

  static inline DebuggerOutput* current_ = nullptr;
  DWORD thread_ = GetCurrentThreadId();
  void* handler_;
};

}  // namespace logging_test
