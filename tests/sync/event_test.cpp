#include <qz/sync/event.h>
#include <qz/sync/mutex.h>

#include "support/error_code.h"
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

// Named events are shared by name, copies duplicate the handle, and the
// event is created with a null access list.
TEST(TEvent, NamedEventIsSharedByNameWithANullAccessList) {
  const std::wstring name = UniqueName(L"event");
  const std::string narrow(name.begin(), name.end());
  TEvent named(name.c_str(), true, false);
  TEvent opened(DoNotInitialize);
  opened.OpenEventW(narrow.c_str(), EVENT_ALL_ACCESS);
  named.Set();
  EXPECT_TRUE(opened.Signaled(0));
  TEvent copy(named);
  EXPECT_NE(static_cast<void*>(copy), static_cast<void*>(named));
  copy.Reset();
  EXPECT_FALSE(named.Signaled(0));

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

TEST(TEvent, FailuresThrowTheSystemError) {
  TEvent missing(DoNotInitialize);
  EXPECT_EQ(qz_test::CodeThrownBy([&] { missing.OpenEventW(UniqueName(L"missing").c_str(), SYNCHRONIZE); }),
            ERROR_FILE_NOT_FOUND);
  EXPECT_THROW(missing.Set(), ESystemException);
  const std::wstring taken = UniqueName(L"taken");
  TMutex mutex(taken.c_str());
  EXPECT_THROW(TEvent(taken.c_str(), true, false), ESystemException);  // a mutex has the name
}

}  // namespace
