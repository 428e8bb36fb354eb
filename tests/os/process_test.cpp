#include <qz/os/process.h>

#include "support/error_code.h"

#include <gtest/gtest.h>

namespace {

DWORD ExitCodeOf(const TProcess& process) {
  EXPECT_EQ(process.WaitForSingleObject(60000, TRUE), static_cast<DWORD>(WAIT_OBJECT_0));
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeProcess(process, &code));
  return code;
}

TEST(TProcess, ChildRunsOrIsTerminatedWithTheGivenCode) {
  TProcess narrow;
  narrow.CreateProcessW("cmd.exe /c exit 3", 0);
  EXPECT_EQ(ExitCodeOf(narrow), 3u);
  TProcess child;
  child.CreateProcessW(L"cmd.exe /c exit 0", CREATE_SUSPENDED);
  child.TerminateProcess(42);
  TProcess copy(child);  // duplicates refer to the same process
  EXPECT_EQ(ExitCodeOf(copy), 42u);
}

TEST(TProcess, MissingProgramThrowsTheSystemError) {
  TProcess child;
  EXPECT_EQ(qz_test::CodeThrownBy([&] { child.CreateProcessW(L"qz-no-such-program.exe", 0); }), ERROR_FILE_NOT_FOUND);
}

}  // namespace
