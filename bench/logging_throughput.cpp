// Log statements per second through a session, next to the cost floor that
// the design itself sets, measured in the same run:
//   - into memory: one kernel mutex wait and release per statement, which is
//     what a session costs when its writers cost nothing;
//   - into a write-through file: plain WriteFile calls of the same text on a
//     handle opened the same way, alone and together with the mutex pair.
//
//   scripts/bench logging
//
// Every kernel call under Wine is a round trip to the wine server, whose
// speed follows the machine's load. So floor and subject run in alternating
// short slices, and the fastest slice of each counts: load only ever slows a
// slice down.
#include <qz/logging/debug_stream.h>
#include <qz/logging/permanent_file_writer.h>
#include <qz/time/pcounter.h>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

const double kSliceSeconds = 0.05;
const int kRounds = 12;

using Step = std::function<void(int)>;

// A sink that keeps the text in memory, reusing its buffer.
class MemoryWriter : public TStreamWriter {
 public:
  MemoryWriter() { text.reserve(1 << 20); }
  void StreamWriteString(const char* data, size_t length) override {
    if (text.size() + length > text.capacity()) text.clear();
    text.append(data, length);
  }
  std::string text;
};

// Nanoseconds per call of `step` over one slice.
double Slice(const Step& step) {
  _pcounter_t watch;
  int done = 0;
  double elapsed = 0;
  do {
    for (int i = 0; i < 64; ++i) step(done + i);
    done += 64;
    elapsed = watch.get_elapsed();
  } while (elapsed < kSliceSeconds);
  return elapsed * 1e9 / done;
}

// Best nanoseconds per call of each step, the steps taking turns.
std::vector<double> Race(const std::vector<Step>& steps) {
  std::vector<double> best(steps.size(), 1e300);
  for (int round = 0; round < kRounds; ++round)
    for (size_t i = 0; i < steps.size(); ++i) best[i] = std::min(best[i], Slice(steps[i]));
  return best;
}

void Report(const char* what, double ns) { std::printf("  %-52s %8.0f ns %10.0f /s\n", what, ns, 1e9 / ns); }

std::string TempFile(const char* stem) {
  char folder[MAX_PATH];
  GetTempPathA(MAX_PATH, folder);
  return std::string(folder) + stem + std::to_string(GetCurrentProcessId()) + ".log";
}

HANDLE OpenLikeThePermanentWriter(const std::string& name) {
  return CreateFileA(name.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH, nullptr);
}

void Write(HANDLE file, const char* text, DWORD length) {
  DWORD written = 0;
  WriteFile(file, text, length, &written, nullptr);
}

}  // namespace

int main() {
  std::printf("logging throughput, one statement: TDebugStreamSession(s) << \"statement \" << i << '\\n'\n");
  HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
  const Step mutex_pair = [mutex](int) {
    WaitForSingleObjectEx(mutex, INFINITE, TRUE);
    ReleaseMutex(mutex);
  };

  TDebugStream to_memory(new MemoryWriter);
  const Step statement = [&to_memory](int i) { TDebugStreamSession(to_memory) << "statement " << i << '\n'; };
  const auto memory = Race({mutex_pair, statement});
  // The same statement while this thread holds the stream already: no kernel
  // call at all, so this is everything a statement costs besides its pair.
  double rest = 0;
  {
    TDebugStreamSession held(to_memory);
    rest = Race({statement})[0];
  }
  std::printf("\ninto memory\n");
  Report("floor: kernel mutex wait + release", memory[0]);
  Report("session into an in-memory writer", memory[1]);
  Report("  of which outside the kernel (stream already held)", rest);
  std::printf("  ratio to the floor %.2f measured, %.3f from the parts (goal: at most 1.20)\n", memory[1] / memory[0],
              (memory[0] + rest) / memory[0]);

  // The writer turns the statement's three pieces into three writes of
  // "statement ", the number and "\r\n".
  const std::string plain_name = TempFile("qz-bench-plain-");
  const std::string permanent_name = TempFile("qz-bench-permanent-");
  HANDLE plain = OpenLikeThePermanentWriter(plain_name);
  std::vector<double> file;
  {
    TDebugStream to_file(new TPermanentFileWriter(permanent_name.c_str()));
    file = Race({[plain](int) { Write(plain, "statement 1234567\r\n", 19); },
                 [plain, &mutex_pair](int i) {
                   mutex_pair(i);
                   Write(plain, "statement ", 10);
                   Write(plain, "1234567", 7);
                   Write(plain, "\r\n", 2);
                 },
                 [&to_file](int i) { TDebugStreamSession(to_file) << "statement " << i << '\n'; }});
  }
  CloseHandle(plain);
  CloseHandle(mutex);
  DeleteFileA(plain_name.c_str());
  DeleteFileA(permanent_name.c_str());
  std::printf("\ninto a write-through file\n");
  Report("floor: one WriteFile of the line", file[0]);
  Report("floor: mutex pair + one WriteFile per piece (3)", file[1]);
  Report("session into TPermanentFileWriter", file[2]);
  std::printf("  ratio to one WriteFile %.2f, to the design's own calls %.2f\n", file[2] / file[0], file[2] / file[1]);
  return 0;
}
