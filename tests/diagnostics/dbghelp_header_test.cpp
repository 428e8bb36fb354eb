// A program that includes the system's <dbghelp.h> after qz's headers still
// calls the library's symbol functions: its StackWalk macro lands on the
// library's forwarding overload.
#include <qz/qz.h>

#include <windows.h>

#include <dbghelp.h>

#include <gtest/gtest.h>

namespace {

TEST(SymbolsWithDbghelpHeader, LibraryFunctionsKeepTheirNames) {
  unsigned long long frames[4] = {};
  const unsigned int count = StackWalk(frames, nullptr, nullptr, 0, 4);
  ASSERT_GE(count, 1u);
  EXPECT_EQ(SymGetModuleFromAddress(frames[0]), "qz_diagnostics_tests");
  ASSERT_TRUE(SymInitialize());
  SymCleanup();
}

}  // namespace
