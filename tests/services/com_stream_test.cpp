#include <qz/errors/exceptions.h>
#include <qz/logging/global_streams.h>
#include <qz/services/com_file_stream.h>
#include <qz/services/com_string_stream.h>

#include "support/captured_stream.h"
#include "support/temp_path.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using qz_test::TempPath;

LARGE_INTEGER Move(__int64 n) {
  LARGE_INTEGER move;
  move.QuadPart = n;
  return move;
}

// The result of a Read and the bytes it gave.
std::pair<HRESULT, std::string> ReadFrom(IStream* stream, ULONG size) {
  std::string bytes(size, '\0');
  ULONG read = 99;
  const HRESULT hr = stream->Read(&bytes[0], size, &read);
  return {hr, bytes.substr(0, read)};
}

ULONGLONG StatSize(IStream* stream) {
  STATSTG stat;
  EXPECT_EQ(stream->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(stat.type, static_cast<DWORD>(STGTY_STREAM));
  return stat.cbSize.QuadPart;
}

TEST(CComFileStream, ReadsWritesAndSeeksTheFile) {
  TempPath path;
  path.Put("0123456789abcdef");
  IStreamPtr stream = CComFileStream::OpenFileStream(path.wide(), GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
  ASSERT_TRUE(stream);
  ASSERT_EQ(stream->Seek(Move(-4), STREAM_SEEK_END, nullptr), S_OK);
  EXPECT_EQ(ReadFrom(stream, 10), std::make_pair(S_FALSE, std::string("cdef")));  // short at the end
  EXPECT_EQ(ReadFrom(stream, 4), std::make_pair(S_FALSE, std::string()));
  ASSERT_EQ(stream->Seek(Move(2), STREAM_SEEK_SET, nullptr), S_OK);
  EXPECT_EQ(ReadFrom(stream, 3), std::make_pair(S_OK, std::string("234")));
  EXPECT_EQ(stream->Write("XYZ", 3, nullptr), S_OK);
  EXPECT_EQ(stream->Seek(Move(0), 7, nullptr), E_FAIL);  // no such origin
  EXPECT_EQ(StatSize(stream), 16u);
  EXPECT_EQ(stream->Commit(0), E_NOTIMPL);  // writes are not buffered
  stream = nullptr;
  EXPECT_EQ(path.Contents(), "01234XYZ89abcdef");
}

TEST(CComFileStream, OpeningAMissingFileTellsDebugAndGivesNull) {
  TempPath missing;
  qz_test::CapturedStream debug(Debug);
  EXPECT_FALSE(CComFileStream::OpenFileStream(missing.wide(), GENERIC_READ, 0, OPEN_EXISTING));
  EXPECT_EQ(debug.text(), std::string("CComFileStream::OpenFileStream( \"") + missing.narrow() +
                              "\" ) - failed to open, error #2\n");
}

struct WatchedStream : CComFileStream {
  WatchedStream(const TFile& f, bool& gone) : CComFileStream(f), gone_(gone) {}
  ~WatchedStream() override { gone_ = true; }
  bool& gone_;
};

TEST(CComFileStream, SmartPtrAndComCountTogetherOnAnyThread) {
  TempPath path;
  bool gone = false;
  SmartPtr<WatchedStream> held(new WatchedStream(TFile(path.wide(), GENERIC_WRITE, 0, CREATE_ALWAYS), gone));
  IStream* com = held.get();
  EXPECT_EQ(com->AddRef(), 2u);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([com] {
      for (int i = 0; i < 20000; ++i) {
        IStreamPtr through_com(com);
        SmartPtr<CComFileStream> through_smart(static_cast<CComFileStream*>(com));
      }
    });
  for (auto& thread : threads) thread.join();
  held.reset();
  EXPECT_FALSE(gone);
  EXPECT_EQ(com->Release(), 0u);
  EXPECT_TRUE(gone);
}

// Both streams answer through one QueryInterface.
TEST(ComStreams, AnswerForTheirInterfacesOnly) {
  TempPath path;
  SmartPtr<CComFileStream> file(new CComFileStream(path.wide(), GENERIC_WRITE, 0, CREATE_ALWAYS));
  IStream* const stream = file.get();
  for (const IID* iid : {&IID_IUnknown, &IID_ISequentialStream, &IID_IStream}) {
    void* object = nullptr;
    EXPECT_EQ(stream->QueryInterface(*iid, &object), S_OK);
    EXPECT_EQ(object, stream);
    stream->Release();
  }
  void* object = stream;
  EXPECT_EQ(stream->QueryInterface(IID_IPersist, &object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(file->ref_count(), 1);
}

TEST(CComStringStream, StatTellsWhatIsLeftToRead) {
  CComStringStream stream;
  ULONG written = 0;
  EXPECT_EQ(stream.Write("hello", 5, &written), S_OK);
  EXPECT_EQ(written, 5u);
  EXPECT_EQ(ReadFrom(&stream, 2), std::make_pair(S_OK, std::string("he")));
  EXPECT_EQ(StatSize(&stream), 3u);  // not the length, 5
  EXPECT_EQ(ReadFrom(&stream, 10), std::make_pair(S_FALSE, std::string("llo")));
  EXPECT_EQ(stream.Write("!", 1, nullptr), S_OK);  // the end was reported once
  EXPECT_EQ(ReadFrom(&stream, 1).second, "!");
  // Release never destroys, so a stream on the stack survives COM.
  EXPECT_EQ(stream.AddRef(), 1u);
  EXPECT_EQ(stream.Release(), 0u);
  EXPECT_EQ(stream.str(), "hello!");
}

TEST(CComStringStream, SeeksBothPositionsOrNeither) {
  CComStringStream stream;
  stream.Write("abcdef", 6, nullptr);
  ReadFrom(&stream, 1);
  const struct { __int64 move; DWORD origin; HRESULT hr; ULONGLONG read_position, left; } cases[] = {
      {4, 3, S_OK, 1, 5},                                  // unknown origin: nothing moves
      {2, STREAM_SEEK_SET, S_OK, 2, 0},                    // both to 2
      {1, STREAM_SEEK_CUR, S_OK, 3, 0},                    // each from where it is
      {-2, STREAM_SEEK_END, S_OK, 4, 0},                   // both to 4
      {9, STREAM_SEEK_END, STG_E_INVALIDFUNCTION, 4, 0},   // past the end
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.move) + " from " + std::to_string(c.origin));
    ULARGE_INTEGER position;
    position.QuadPart = 99;
    EXPECT_EQ(stream.Seek(Move(c.move), c.origin, &position), c.hr);
    if (c.hr == S_OK) {
      EXPECT_EQ(position.QuadPart, c.read_position);
    }
    EXPECT_EQ(StatSize(&stream), c.left);
  }
  EXPECT_EQ(ReadFrom(&stream, 9).second, "ef");
}

TEST(CComStringStream, OpensWithACopyOfTheText) {
  std::stringstream source("<doc/>");
  IStreamPtr stream = CComStringStream::OpenStringStream(source);
  source << "changed";
  EXPECT_EQ(StatSize(stream), 0u);  // both positions at the start
  EXPECT_EQ(ReadFrom(stream, 64), std::make_pair(S_FALSE, std::string("<doc/>")));
}

}  // namespace
