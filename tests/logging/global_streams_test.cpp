// The process-wide streams as the library builds them at load.
#include <qz/logging/console_writer.h>
#include <qz/logging/debug_writer.h>
#include <qz/logging/file_writer.h>
#include <qz/logging/global_streams.h>

#include "logging/logging_test_support.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace {

using logging_test::DebuggerOutput;
using logging_test::Peek;
using logging_test::PeekFile;

std::vector<std::string> WriterTypes(const TDebugStream& s) {
  std::vector<std::string> types;
  for (const auto& w : Peek::WritersOf(s)) types.push_back(typeid(*w).name());
  return types;
}

TEST(GlobalStreams, EachHasItsWritersInOrder) {
  const std::string debug = typeid(TDebugWriter).name();
  const std::string console = typeid(TConsoleWriter).name();
  const std::string file = typeid(TFileWriter).name();
  EXPECT_EQ(WriterTypes(Console), (std::vector<std::string>{console}));
  EXPECT_EQ(WriterTypes(Debug), (std::vector<std::string>{debug}));
  ASSERT_EQ(WriterTypes(Error), (std::vector<std::string>{debug, console, file}));
  const auto& error_file = dynamic_cast<const TFileWriter&>(*Peek::WritersOf(Error)[2]);
  EXPECT_EQ(PeekFile::NameOf(error_file), "c:\\error.log");
}

TEST(GlobalStreams, DebugStatementsReachTheDebugger) {
  DebuggerOutput debugger;
  TDebugStreamSession(Debug) << "global " << 42 << '\n';
  EXPECT_EQ(debugger.texts, (std::vector<std::string>{"global ", "42", "\n"}));
}

}  // namespace
