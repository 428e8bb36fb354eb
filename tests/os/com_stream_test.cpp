#include <qz/errors/exceptions.h>
#include <qz/logging/global_streams.h>
#include <qz/os/com_file_stream.h>
#include <qz/os/com_string_stream.h>

#include "support/captured_stream.h"
#include "support/temp_path.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using qz_test::CapturedStream;
using qz_test::TempPath;

LARGE_INTEGER Move(__int64 n) {
  LARGE_INTEGER move;
  move.QuadPart = n;
  return move;
}

struct Transfer {
  HRESULT hr;
  std::string bytes;
};

Transfer ReadFrom(IStream* stream, ULONG size) {
  std::string bytes(size, '\0');
  ULONG read = 99;
  const HRESULT hr = stream->Read(&bytes[0], size, &read);
  bytes.resize(read);
  return {hr, bytes};
}

ULONGLONG StatSize(IStream* stream) {
  STATSTG stat;
  stat.cbSize.QuadPart = 99;
  EXPECT_EQ(stream->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(stat.type, static_cast<DWORD>(STGTY_STREAM));
  EXPECT_EQ(stat.pwcsName, nullptr);
  return stat.cbSize.QuadPart;
}

IStreamPtr OpenTemp(const TempPath& path, DWORD disposition = OPEN_EXISTING) {
  return CComFileStream::OpenFileStream(path.wide(), GENERIC_READ | GENERIC_WRITE, 0, disposition);
}

TEST(CComFileStream, ReadsShortAtTheEndOfTheFile) {
  TempPath path;
  path.Put("0123456789abcdef");
  IStreamPtr stream = OpenTemp(path);
  ASSERT_TRUE(stream);
  ULARGE_INTEGER position;
  ASSERT_EQ(stream->Seek(Move(-4), STREAM_SEEK_END, &position), S_OK);
  EXPECT_EQ(position.QuadPart, 12u);
  const Transfer tail = ReadFrom(stream, 10);
  EXPECT_EQ(tail.hr, S_FALSE);
  EXPECT_EQ(tail.bytes, "cdef");
  EXPECT_EQ(ReadFrom(stream, 4).hr, S_FALSE);  // at the end: nothing
  ASSERT_EQ(stream->Seek(Move(2), STREAM_SEEK_SET, nullptr), S_OK);
  const Transfer middle = ReadFrom(stream, 3);
  EXPECT_EQ(middle.hr, S_OK);
  EXPECT_EQ(middle.bytes, "234");
  EXPECT_EQ(StatSize(stream), 16u);
}

TEST(CComFileStream, WritesGoToTheFile) {
  TempPath path;
  {
    IStreamPtr stream = OpenTemp(path, CREATE_ALWAYS);
    ULONG written = 0;
    EXPECT_EQ(stream->Write("hello", 5, &written), S_OK);
    EXPECT_EQ(written, 5u);
    EXPECT_EQ(stream->Seek(Move(-2), STREAM_SEEK_CUR, nullptr), S_OK);
    EXPECT_EQ(stream->Write("p!", 2, nullptr), S_OK);
    EXPECT_EQ(StatSize(stream), 5u);
  }
  EXPECT_EQ(path.Contents(), "help!");
}

TEST(CComFileStream, RefusedOperationsAnswerWithoutThrowing) {
  TempPath path;
  path.Put("x");
  IStreamPtr stream = CComFileStream::OpenFileStream(path.wide(), GENERIC_WRITE, 0, OPEN_EXISTING);
  ASSERT_TRUE(stream);
  const Transfer from_write_only = ReadFrom(stream, 1);
  EXPECT_EQ(from_write_only.hr, E_FAIL);
  EXPECT_EQ(from_write_only.bytes, "");
  EXPECT_EQ(stream->Seek(Move(0), 7, nullptr), E_FAIL);  // no such origin
  EXPECT_EQ(stream->Seek(Move(-5), STREAM_SEEK_SET, nullptr), E_FAIL);
  EXPECT_EQ(stream->Commit(0), E_NOTIMPL);  // writes are not buffered
  ULARGE_INTEGER any{};
  IStream* copy = stream;
  EXPECT_EQ(stream->SetSize(any), E_NOTIMPL);
  EXPECT_EQ(stream->CopyTo(copy, any, nullptr, nullptr), E_NOTIMPL);
  EXPECT_EQ(stream->Revert(), E_NOTIMPL);
  EXPECT_EQ(stream->LockRegion(any, any, LOCK_WRITE), E_NOTIMPL);
  EXPECT_EQ(stream->UnlockRegion(any, any, LOCK_WRITE), E_NOTIMPL);
  EXPECT_EQ(stream->Clone(&copy), E_NOTIMPL);
  EXPECT_EQ(copy, nullptr);
}

// Unlike the other operations, Stat reports a failing query as an exception.
TEST(CComFileStream, StatOfAStreamWithoutFileThrows) {
  CComFileStream none{TFile(DoNotInitialize)};
  STATSTG stat;
  EXPECT_THROW(none.Stat(&stat, STATFLAG_NONAME), ESystemException);
  EXPECT_EQ(ReadFrom(&none, 1).hr, E_FAIL);
  EXPECT_EQ(none.Write("x", 1, nullptr), E_FAIL);
}

TEST(CComFileStream, OpeningAMissingFileTellsDebugAndGivesNull) {
  TempPath missing;
  CapturedStream debug(Debug);
  IStreamPtr stream = CComFileStream::OpenFileStream(missing.wide(), GENERIC_READ, 0, OPEN_EXISTING);
  EXPECT_FALSE(stream);
  EXPECT_EQ(debug.text(), std::string("CComFileStream::OpenFileStream( \"") + missing.narrow() +
                              "\" ) - failed to open, error #2\n");
}

TEST(CComFileStream, ConstructorsOpenOrDuplicate) {
  TempPath path;
  CComFileStream created(path.wide(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
  EXPECT_EQ(created.Write("abc", 3, nullptr), S_OK);
  CComFileStream copy(created);  // duplicate handle, one file pointer
  EXPECT_EQ(copy.Seek(Move(0), STREAM_SEEK_CUR, nullptr), S_OK);
  EXPECT_EQ(copy.ref_count(), 0);
  EXPECT_EQ(StatSize(&copy), 3u);
  TempPath missing;
  EXPECT_THROW(CComFileStream(missing.wide(), GENERIC_READ, 0, OPEN_EXISTING), ESystemException);
}

// Tells when it is gone.
struct WatchedStream : CComFileStream {
  WatchedStream(const TFile& f, bool& gone) : CComFileStream(f), gone_(gone) {}
  ~WatchedStream() override { gone_ = true; }
  bool& gone_;
};

TEST(CComFileStream, SmartPtrAndComCountTogether) {
  TempPath path;
  TFile file(path.wide(), GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
  bool gone = false;
  SmartPtr<WatchedStream> held(new WatchedStream(file, gone));
  IStream* com = held.get();
  EXPECT_EQ(com->AddRef(), 2u);
  {
    IStreamPtr through_com(com);
    EXPECT_EQ(held->ref_count(), 3);
    IUnknown* unknown = nullptr;
    ASSERT_EQ(com->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(unknown, com);
    EXPECT_EQ(unknown->Release(), 3u);
  }
  held.reset();
  EXPECT_FALSE(gone);
  EXPECT_EQ(com->Release(), 0u);
  EXPECT_TRUE(gone);
}

TEST(CComFileStream, CountsFromManyThreadsAtOnce) {
  TempPath path;
  SmartPtr<CComFileStream> held(new CComFileStream(path.wide(), GENERIC_WRITE, 0, CREATE_ALWAYS));
  IStream* com = held.get();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([com] {
      for (int i = 0; i < 20000; ++i) {
        com->AddRef();
        SmartPtr<CComFileStream> extra(static_cast<CComFileStream*>(com));
        com->Release();
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(held->ref_count(), 1);
}

TEST(ComStreams, AnswerForTheirInterfacesOnly) {
  TempPath path;
  SmartPtr<CComFileStream> file(new CComFileStream(path.wide(), GENERIC_WRITE, 0, CREATE_ALWAYS));
  CComStringStream text;
  for (IStream* stream : {static_cast<IStream*>(file.get()), static_cast<IStream*>(&text)}) {
    for (const IID* iid : {&IID_IUnknown, &IID_ISequentialStream, &IID_IStream}) {
      void* object = nullptr;
      EXPECT_EQ(stream->QueryInterface(*iid, &object), S_OK);
      EXPECT_EQ(object, stream);
      stream->Release();
    }
    void* object = stream;
    EXPECT_EQ(stream->QueryInterface(IID_IPersist, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(stream->QueryInterface(IID_IStream, nullptr), E_POINTER);
  }
  EXPECT_EQ(file->ref_count(), 1);
}

TEST(CComStringStream, StatTellsWhatIsLeftToRead) {
  CComStringStream stream;
  ULONG written = 0;
  EXPECT_EQ(stream.Write("hello", 5, &written), S_OK);
  EXPECT_EQ(written, 5u);
  const Transfer head = ReadFrom(&stream, 2);
  EXPECT_EQ(head.hr, S_OK);
  EXPECT_EQ(head.bytes, "he");
  EXPECT_EQ(StatSize(&stream), 3u);  // not the length, 5
  const Transfer rest = ReadFrom(&stream, 10);
  EXPECT_EQ(rest.hr, S_FALSE);
  EXPECT_EQ(rest.bytes, "llo");
  // The end was reported once; the stream goes on.
  EXPECT_EQ(stream.Write("!", 1, nullptr), S_OK);
  EXPECT_EQ(ReadFrom(&stream, 1).bytes, "!");
  EXPECT_EQ(stream.str(), "hello!");
}

TEST(CComStringStream, SeeksBothPositionsOrNeither) {
  CComStringStream stream;
  stream.Write("abcdef", 6, nullptr);
  ReadFrom(&stream, 1);
  ULARGE_INTEGER position;
  struct Case {
    __int64 move;
    DWORD origin;
    HRESULT hr;
    ULONGLONG read_position;
    ULONGLONG left;
  };
  const Case cases[] = {
      {4, 3, S_OK, 1, 5},                           // unknown origin: nothing moves
      {2, STREAM_SEEK_SET, S_OK, 2, 0},             // both to 2
      {1, STREAM_SEEK_CUR, S_OK, 3, 0},             // each from where it is
      {-2, STREAM_SEEK_END, S_OK, 4, 0},            // both to 4
      {-9, STREAM_SEEK_SET, STG_E_INVALIDFUNCTION, 4, 0},  // before the start
      {9, STREAM_SEEK_END, STG_E_INVALIDFUNCTION, 4, 0},   // past the end
  };
  for (const Case& c : cases) {
    position.QuadPart = 99;
    EXPECT_EQ(stream.Seek(Move(c.move), c.origin, &position), c.hr) << c.move << " from " << c.origin;
    if (c.hr == S_OK) {
      EXPECT_EQ(position.QuadPart, c.read_position) << c.move << " from " << c.origin;
    }
    EXPECT_EQ(StatSize(&stream), c.left) << c.move << " from " << c.origin;
  }
  EXPECT_EQ(ReadFrom(&stream, 9).bytes, "ef");
}

TEST(CComStringStream, CommitsOnlyWithoutFlags) {
  CComStringStream stream;
  EXPECT_EQ(stream.Commit(0), S_OK);
  EXPECT_EQ(stream.Commit(STGC_OVERWRITE), E_NOTIMPL);
  ULARGE_INTEGER any{};
  EXPECT_EQ(stream.SetSize(any), E_NOTIMPL);
  EXPECT_EQ(stream.Revert(), E_NOTIMPL);
}

TEST(CComStringStream, ReleaseNeverDestroys) {
  CComStringStream stream;  // on the stack: COM must not end it
  EXPECT_EQ(stream.AddRef(), 1u);
  EXPECT_EQ(stream.Release(), 0u);
  EXPECT_EQ(stream.Write("still here", 10, nullptr), S_OK);
  {
    IStreamPtr held(&stream);
  }
  EXPECT_EQ(stream.ref_count(), 0);
  EXPECT_EQ(stream.str(), "still here");
}

TEST(CComStringStream, OpensWithACopyOfTheText) {
  std::stringstream source;
  source << "<doc/>";
  IStreamPtr stream = CComStringStream::OpenStringStream(source);
  ASSERT_TRUE(stream);
  source << "changed";
  EXPECT_EQ(StatSize(stream), 0u);  // both positions at the start
  const Transfer all = ReadFrom(stream, 64);
  EXPECT_EQ(all.hr, S_FALSE);
  EXPECT_EQ(all.bytes, "<doc/>");
}

}  // namespace
