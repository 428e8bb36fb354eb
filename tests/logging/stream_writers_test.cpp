// The writers (console, file per write, permanent file) and the
// process-wide streams as the library builds them at load.
#include <qz/core/type_name.h>
#include <qz/logging/console_writer.h>
#include <qz/logging/file_writer.h>
#include <qz/logging/global_streams.h>
#include <qz/logging/permanent_file_writer.h>

#include "logging/logging_test_support.h"
#include "support/temp_path.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace {

using namespace logging_test;
using qz_test::TempPath;

// Opened for each write only: nothing exists before the first, the bytes are
// appended as given, and the file is free (deletable) in between.
TEST(FileWriter, AppendsTheBytesAsWrittenAndLeavesTheFileFreeBetweenWrites) {
  TempPath path;
  TFileWriter writer(path.narrow());
  EXPECT_FALSE(path.Exists());
  writer.StreamWriteString("a\nb\r\n", 5);
  writer.StreamWriteString(std::string("z\0\x1a", 3).data(), 3);
  EXPECT_EQ(path.Contents(), std::string("a\nb\r\nz\0\x1a", 8));
  EXPECT_TRUE(DeleteFileA(path.narrow()));
  path.Put("old\n");
  writer.StreamWriteString("new\n", 4);
  EXPECT_EQ(path.Contents(), "old\nnew\n");
}

// Appends to what is there, can be read while open, and expands every line
// feed to carriage return line feed, even in long texts.
TEST(PermanentFileWriter, AppendsExpandingLineFeedsAndCanBeReadWhileOpen) {
  TempPath path;
  path.Put("old\n");
  std::string text, expected;
  for (int i = 0; i < 1000; ++i) {
    text += "line " + std::to_string(i) + "\n";
    expected += "line " + std::to_string(i) + "\r\n";
  }
  TPermanentFileWriter writer(path.wide());
  writer.StreamWriteString("a\r\nb\n", 5);
  EXPECT_EQ(path.Contents(), "old\na\r\r\nb\r\n");
  TPermanentFileWriter copy(writer);
  copy.StreamWriteString("\n\nc", 3);
  copy.StreamWriteString(text.data(), text.size());
  EXPECT_EQ(path.Contents(), "old\na\r\r\nb\r\n\r\n\r\nc" + expected);
}

// So does the console writer without a console.
TEST(FileWriters, UnopenableFileAcceptsWritesAndDoesNothing) {
  TempPath path(L"qz-no-such-folder\\");
  TFileWriter per_write(path.narrow());
  TPermanentFileWriter narrow(path.narrow());
  TPermanentFileWriter wide(path.wide());
  TPermanentFileWriter none(static_cast<const char*>(nullptr));
  TConsoleWriter console(false);
  for (TStreamWriter* w : std::initializer_list<TStreamWriter*>{&per_write, &narrow, &wide, &none, &console})
    EXPECT_NO_THROW(w->StreamWriteString("lost\n", 5));
  EXPECT_FALSE(path.Exists());
}

// The debug stream's writer goes to the debugger, the error stream's also to
// the console and to a file.
TEST(GlobalStreams, EachHasItsWritersInOrder) {
  const auto types = [](const TDebugStream& s) {
    std::string names;
    for (const auto& w : Peek::WritersOf(s)) names += type_name(typeid(*w)) + ";";
    return names;
  };
  EXPECT_EQ(types(Console), "TConsoleWriter;");
  EXPECT_EQ(types(Debug), "TDebugWriter;");
  ASSERT_EQ(types(Error), "TDebugWriter;TConsoleWriter;TFileWriter;");
  const auto& error_file = dynamic_cast<const TFileWriter&>(*Peek::WritersOf(Error)[2]);
  EXPECT_EQ(PeekFile::NameOf(error_file), "c:\\error.log");
}

}  // namespace
