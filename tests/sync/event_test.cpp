#include <qz/sync/event.h>

#include "support/unique_name.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using qz_test::UniqueName;

// The default is manual reset and not signalled; (false, true) is an
// automatic one that starts signalled.
TEST(TEvent, DefaultIsManualResetAndAutoResetReleasesOneWait) {
  TEvent event;
  EXPECT_FALSE(event.Signaled(0));
  event.Set();
  EXPECT_TRUE(event.Signaled(0));
  EXPECT_TRUE(event.Signaled(0));  // stays set
  event.Reset();
  EXPECT_FALSE(event.Signaled(0));

  TEvent automatic(false, true);
  automatic.WaitForSignal();
  EXPECT_FALSE(automatic.Signaled(0));
}

// A named event is created with a null access list.
TEST(TEvent, NamedEventIsCreatedWithANullAccessList) {
  const std::wstring name = UniqueName(L"event");
  TEvent named(name.c_str(), true, false);
  DWORD needed = 0;
  GetKernelObjectSecurity(named, DACL_SECURITY_INFORMATION, nullptr, 0, &needed);
  ASSERT_GT(needed, 0u);
  std::unique_ptr<char[]> buffer(new char[needed]);
  ASSERT_TRUE(GetKernelObjectSecurity(named, DACL_SECURITY_INFORMATION, buffer.get(), needed, &needed));
  BOOL present = FALSE, defaulted = TRUE;
  PACL acl = reinterpret_cast<PACL>(1);
  ASSERT_TRUE(GetSecurityDescriptorDacl(buffer.get(), &present, &acl, &defaulted));
  EXPECT_TRUE(present);
  EXPECT_EQ(acl, nullptr);
}

}  // namespace
