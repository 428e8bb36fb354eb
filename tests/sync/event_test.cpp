#include <qz/sync/event.h>
#include <qz/sync/mutex.h>

#include "support/error_code.h"
#include "support/unique_name.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using qz_test::CodeOf;
using qz_test::UniqueName;

TEST(TEvent, DefaultIsManualResetAndNotSignalled) {
  TEvent event;
  EXPECT_FALSE(event.Signaled(0));
  event.Set();
  EXPECT_TRUE(event.Signaled(0));
  EXPECT_TRUE(event.Signaled(0));  // stays set
  event.Reset();
  EXPECT_FALSE(event.Signaled(0));
  event.Pulse();  // without waiters: leaves it reset
  EXPECT_FALSE(event.Signaled(0));
}

TEST(TEvent, AutoResetEventReleasesOneWait) {
  TEvent event(false, true);
  EXPECT_TRUE(event.Signaled(0));
  EXPECT_FALSE(event.Signaled(0));
  event.Set();
  event.WaitForSignal();
  EXPECT_FALSE(event.Signaled(0));
}

TEST(TEvent, NamedEventIsSharedByNameAndCopiesDuplicateIt) {
  const std::wstring name = UniqueName(L"event");
  const std::string narrow(name.begin(), name.end());
  TEvent named(name.c_str(), true, false);
  TEvent opened(DoNotInitialize);
  EXPECT_FALSE(opened.IsValidHandle());
  opened.OpenEventW(narrow.c_str(), EVENT_ALL_ACCESS);
  named.Set();
  EXPECT_TRUE(opened.Signaled(0));

  TEvent same_name(narrow.c_str(), true, false);  // opens the existing one
  EXPECT_TRUE(same_name.Signaled(0));

  TEvent copy(named);
  EXPECT_NE(static_cast<void*>(copy), static_cast<void*>(named));
  TEvent assigned(DoNotInitialize);
  assigned = copy;
  assigned.Reset();
  EXPECT_FALSE(named.Signaled(0));
}

TEST(TEvent, NamedEventHasANullAccessList) {
  TEvent named(UniqueName(L"open").c_str(), true, false);
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
  try {
    missing.OpenEventW(UniqueName(L"missing").c_str(), SYNCHRONIZE);
    FAIL() << "opened a missing event";
  } catch (const ESystemException& e) {
    EXPECT_EQ(CodeOf(e), ERROR_FILE_NOT_FOUND);
  }
  EXPECT_EQ(static_cast<void*>(missing), nullptr);
  EXPECT_THROW(missing.Set(), ESystemException);
  EXPECT_THROW(missing.Signaled(0), ESystemException);

  const std::wstring taken = UniqueName(L"taken");
  TMutex mutex(taken.c_str());
  EXPECT_THROW(TEvent(taken.c_str(), true, false), ESystemException);  // a mutex has the name
}

}  // namespace
