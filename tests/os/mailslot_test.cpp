#include <qz/os/mailslot.h>

#include "support/error_code.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qz_test::CodeThrownBy;

std::wstring MailslotPath() { return L"\\\\.\\mailslot\\" + qz_test::UniqueName(L"mailslot"); }

// A writer's messages arrive one per read, whole and in order, on a server
// made by either constructor.
TEST(TMailslot, DeliversEachMessageWholeToTheServer) {
  const std::wstring wide = MailslotPath();
  const std::string narrow(wide.begin(), wide.end());
  TMailslot server(narrow.c_str(), 5000, 0);
  TFile client(wide.c_str(), GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
  client.WriteFile("first", 5);
  client.WriteFile("second message", 14);
  char buffer[64];
  EXPECT_EQ(std::string(buffer, server.ReadFile(buffer, sizeof buffer)), "first");
  EXPECT_EQ(std::string(buffer, server.ReadFile(buffer, sizeof buffer)), "second message");
}

// An empty mailslot ends a read after the read time-out with the system's
// time-out error rather than blocking; a second server of one name fails.
TEST(TMailslot, ReadTimesOutAndANameServesOnlyOnce) {
  const std::wstring name = MailslotPath();
  TMailslot server(name.c_str(), 50, 0);
  char buffer[16];
  EXPECT_EQ(CodeThrownBy([&] { server.ReadFile(buffer, sizeof buffer); }), ERROR_SEM_TIMEOUT);
  EXPECT_EQ(CodeThrownBy([&] { TMailslot(name.c_str(), 0, 0); }), ERROR_ALREADY_EXISTS);
}

}  // namespace
