// The writers: debugger, console, file per write, permanent file.
#include <qz/logging/console_writer.h>
#include <qz/logging/debug_writer.h>
#include <qz/logging/file_writer.h>
#include <qz/logging/permanent_file_writer.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

namespace {

using logging_test::DebuggerOutput;
using logging_test::TempPath;

TEST(DebugWriter, SendsTheWholeZeroTerminatedTextWhateverTheLength) {
  DebuggerOutput debugger;
  TDebugWriter writer;
  writer.StreamWriteString("whole text", 3);
  writer.StreamWriteString(nullptr, 0);
  EXPECT_EQ(debugger.texts, (std::vector<std::string>{"whole text"}));
}

TEST(ConsoleWriter, WritingNeverThrowsEvenWithoutAConsole) {
  TConsoleWriter writer(false);
  EXPECT_NO_THROW(writer.StreamWriteString("console text\n", 13));
  TConsoleWriter copy(writer);
  EXPECT_NO_THROW(copy.StreamWriteString("", 0));
}

TEST(FileWriter, AppendsTheBytesAsWrittenAndCreatesTheFile) {
  TempPath path;
  TFileWriter writer(path.narrow());
  EXPECT_FALSE(path.Exists());  // nothing is opened before the first write
  writer.StreamWriteString("a\nb\r\n", 5);
  writer.StreamWriteString(std::string("z\0\x1a", 3).data(), 3);
  EXPECT_EQ(path.Contents(), std::string("a\nb\r\nz\0\x1a", 8));
}

TEST(FileWriter, KeepsExistingContentAndLeavesTheFileFreeBetweenWrites) {
  TempPath path;
  path.Put("old\n");
  TFileWriter writer(path.narrow());
  writer.StreamWriteString("new\n", 4);
  EXPECT_EQ(path.Contents(), "old\nnew\n");
  EXPECT_TRUE(DeleteFileA(path.narrow().c_str()));  // closed after the write
  writer.StreamWriteString("again", 5);
  EXPECT_EQ(path.Contents(), "again");
}

TEST(FileWriter, UnopenableFileDropsTheText) {
  TempPath path("qz-no-such-folder\\");
  TFileWriter writer(path.narrow());
  EXPECT_NO_THROW(writer.StreamWriteString("lost", 4));
  EXPECT_FALSE(path.Exists());
}

TEST(PermanentFileWriter, ExpandsEveryLineFeedToCarriageReturnLineFeed) {
  TempPath path;
  {
    TPermanentFileWriter writer(path.narrow().c_str());
    writer.StreamWriteString("a\r\nb\n", 5);
    writer.StreamWriteString("\n\nc", 3);
  }
  EXPECT_EQ(path.Contents(), "a\r\r\nb\r\n\r\n\r\nc");
}

TEST(PermanentFileWriter, AppendsToExistingContentAndCanBeReadWhileOpen) {
  TempPath path;
  path.Put("old\n");
  TPermanentFileWriter writer(path.wide());
  writer.StreamWriteString("new\n", 4);
  EXPECT_EQ(path.Contents(), "old\nnew\r\n");
  TPermanentFileWriter copy(writer);
  copy.StreamWriteString("copy", 4);
  EXPECT_EQ(path.Contents(), "old\nnew\r\ncopy");
}

TEST(PermanentFileWriter, LongTextsAreExpandedWhole) {
  TempPath path;
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "line " + std::to_string(i) + "\n";
  std::string expected;
  for (int i = 0; i < 1000; ++i) expected += "line " + std::to_string(i) + "\r\n";
  {
    TPermanentFileWriter writer(path.narrow().c_str());
    writer.StreamWriteString(text.data(), text.size());
  }
  EXPECT_EQ(path.Contents(), expected);
}

TEST(PermanentFileWriter, UnopenableFileAcceptsWritesAndDoesNothing) {
  TempPath path("qz-no-such-folder\\");
  TPermanentFileWriter narrow(path.narrow().c_str());
  TPermanentFileWriter wide(path.wide());
  TPermanentFileWriter none(static_cast<const char*>(nullptr));
  EXPECT_NO_THROW(narrow.StreamWriteString("lost\n", 5));
  EXPECT_NO_THROW(wide.StreamWriteString("lost\n", 5));
  EXPECT_NO_THROW(none.StreamWriteString("lost\n", 5));
  EXPECT_FALSE(path.Exists());
}

}  // namespace
