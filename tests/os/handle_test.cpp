#include <qz/os/handle.h>

#include "support/error_code.h"
#include "support/raw_event.h"

#include <gtest/gtest.h>

namespace {

using qz_test::CodeThrownBy;
using qz_test::IsSignaled;
using qz_test::RawEvent;

bool IsOpen(HANDLE h) {
  DWORD flags;
  return GetHandleInformation(h, &flags) != FALSE;
}


// Assignment closes the old handle and duplicates the new.
TEST(THandle, OwnsADuplicateClosedWithItUnlessDetachedAndAssignmentReplacesIt) {
  RawEvent raw, second;
  HANDLE duplicate, detached;
  {
    THandle owner(raw.h);
    THandle copy(owner);
    duplicate = owner;
    EXPECT_NE(duplicate, raw.h);
    EXPECT_NE(static_cast<void*>(copy), duplicate);
    ASSERT_TRUE(SetEvent(copy));
    EXPECT_TRUE(IsSignaled(raw.h));
    detached = copy.DetachHandle();
    EXPECT_EQ(static_cast<void*>(copy), INVALID_HANDLE_VALUE);
  }
  EXPECT_FALSE(IsOpen(duplicate));
  EXPECT_TRUE(IsOpen(raw.h));
  THandle owner;
  owner.AttachHandle(detached);  // takes over without duplicating
  EXPECT_EQ(static_cast<void*>(owner), detached);
  owner = second.h;
  // closed: either gone or already reused for the duplicate
  EXPECT_TRUE(static_cast<void*>(owner) == detached || !IsOpen(detached));
  EXPECT_NE(static_cast<void*>(owner), second.h);
  ASSERT_TRUE(SetEvent(owner));
  EXPECT_TRUE(IsSignaled(second.h));
  const THandle& same = owner;
  owner = same;  // self-assignment leaves the object empty
  EXPECT_EQ(static_cast<void*>(owner), INVALID_HANDLE_VALUE);
}

// Null and -1 are no handle: copies keep them and destructors close nothing,
// but an explicit close, duplicate or wait fails.
TEST(THandle, NoHandleIsNotClosedButFailedCloseDuplicateOrWaitThrows) {
  EXPECT_EQ(static_cast<void*>(THandle()), INVALID_HANDLE_VALUE);
  for (HANDLE none : {HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
    THandle held(none);
    THandle copy(held);
    EXPECT_EQ(static_cast<void*>(copy), none);
    EXPECT_FALSE(held.IsValidHandle());
  }  // destructors close nothing and do not throw
  THandle null_handle(nullptr);
  EXPECT_EQ(CodeThrownBy([&] { null_handle.CloseHandle(); }), ERROR_INVALID_HANDLE);
  EXPECT_EQ(static_cast<void*>(null_handle), INVALID_HANDLE_VALUE);
  const HANDLE bogus = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x7ffffff0));  // never handed out
  EXPECT_THROW(THandle{bogus}, ESystemException);  // duplicating it
  EXPECT_EQ(CodeThrownBy([] { THandle(nullptr).WaitForSingleObject(0, FALSE); }), ERROR_INVALID_HANDLE);
}

}  // namespace
