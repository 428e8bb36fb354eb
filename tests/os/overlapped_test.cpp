#include <qz/os/mailslot.h>
#include <qz/os/overlapped.h>

#include "support/error_code.h"
#include "support/raw_event.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qz_test::CodeThrownBy;
using qz_test::UniqueName;

// The two ends of a named pipe, both opened for overlapped I/O.
struct OverlappedPipe {
  std::wstring name = L"\\\\.\\pipe\\" + UniqueName(L"pipe");
  TOverlapped<TFile> server;
  TOverlapped<TFile> client;

  OverlappedPipe() {
    server.AttachHandle(CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                         PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr));
    client.AttachHandle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
  }
};

// Waits (bounded) for the operation started with `io`; returns its byte count.
DWORD Finish(TOverlapped<TFile>& io, HANDLE done) {
  EXPECT_EQ(WaitForSingleObject(done, 10000), static_cast<DWORD>(WAIT_OBJECT_0));
  DWORD transferred = 0;
  EXPECT_TRUE(io.GetOverlappedResult(transferred, false));
  EXPECT_TRUE(io.HasIoCompleted());
  return transferred;
}

using Event = qz_test::RawEvent;

// A pending read completes through GetOverlappedResult; a cancelled one
// throws the system error from it.
TEST(TOverlapped, PendingReadCompletesOrIsCancelled) {
  OverlappedPipe pipe;
  Event done;
  pipe.server.SetEvent(done.h);
  char buffer[16] = {};
  pipe.server.ReadFile(buffer, sizeof buffer);  // nothing written yet: pending
  DWORD transferred = 0;
  EXPECT_FALSE(pipe.server.GetOverlappedResult(transferred, false));
  EXPECT_FALSE(pipe.server.HasIoCompleted());
  Event written;
  pipe.client.SetEvent(written.h);
  pipe.client.WriteFile("ping", 4);
  EXPECT_EQ(Finish(pipe.client, written.h), 4u);
  EXPECT_EQ(Finish(pipe.server, done.h), 4u);
  EXPECT_EQ(std::string(buffer), "ping");

  ResetEvent(done.h);
  pipe.server.ReadFile(buffer, sizeof buffer);
  pipe.server.CancelIo();
  ASSERT_EQ(WaitForSingleObject(done.h, 10000), static_cast<DWORD>(WAIT_OBJECT_0));
  EXPECT_EQ(CodeThrownBy([&] { pipe.server.GetOverlappedResult(transferred, false); }), ERROR_OPERATION_ABORTED);
}

// The constructor takes the read time-out before the size. Messages are
// written before the reads start: this platform's mailslots complete reads
// at once or after the read time-out rather than leaving them pending, and
// the time-out keeps a fault from hanging the test.
TEST(TMailslot, MessagesTravelFromAWriterToTheServer) {
  const std::wstring name = L"\\\\.\\mailslot\\" + UniqueName(L"slot");
  const std::string narrow(name.begin(), name.end());
  TMailslot slot(narrow.c_str(), 5000, 512);
  DWORD max_size = 0, timeout = 1;
  ASSERT_TRUE(GetMailslotInfo(slot, &max_size, nullptr, nullptr, &timeout));
  EXPECT_EQ(max_size, 512u);
  EXPECT_EQ(timeout, 5000u);
  EXPECT_THROW(TMailslot(name.c_str(), 0, 0), ESystemException);  // the name is taken
  TFile writer(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
  writer.WriteFile("first", 5);
  writer.WriteFile("second", 6);
  Event arrived;
  slot.SetEvent(arrived.h);
  for (const std::string message : {"first", "second"}) {
    char buffer[64] = {};
    ResetEvent(arrived.h);
    slot.ReadFile(buffer, sizeof buffer);
    EXPECT_EQ(Finish(slot, arrived.h), message.size());
    EXPECT_EQ(std::string(buffer), message);
  }
}

}  // namespace
