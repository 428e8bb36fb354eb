#include <qz/os/handle.h>

#include "support/error_code.h"
#include "support/raw_event.h"

#include <gtest/gtest.h>

namespace {

using qz_test::CodeOf;
using qz_test::IsSignaled;

using qz_test::RawEvent;

// A value no handle table hands out.
HANDLE BogusHandle() { return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x7ffffff0)); }

TEST(THandle, NullAndMinusOneMeanNoHandleAndAreNotClosed) {
  EXPECT_EQ(static_cast<void*>(THandle()), INVALID_HANDLE_VALUE);
  for (HANDLE none : {HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
    THandle held(none);
    THandle copy(held);
    EXPECT_EQ(static_cast<void*>(copy), none);
    EXPECT_FALSE(held.IsValidHandle());
    EXPECT_FALSE(THandle::IsValidHandle(none));
  }  // destructors close nothing and do not throw
}

TEST(THandle, ConstructionAndCopyDuplicateToTheSameObject) {
  RawEvent raw;
  THandle from_raw(raw.h);
  THandle copy(from_raw);
  EXPECT_NE(static_cast<void*>(from_raw), raw.h);
  EXPECT_NE(static_cast<void*>(copy), static_cast<void*>(from_raw));
  ASSERT_TRUE(SetEvent(copy));
  EXPECT_TRUE(IsSignaled(raw.h));
  ASSERT_TRUE(ResetEvent(from_raw));
  EXPECT_FALSE(IsSignaled(copy));
}

TEST(THandle, DestructionClosesOnlyItsOwnDuplicate) {
  RawEvent raw;
  HANDLE duplicate;
  {
    THandle owner(raw.h);
    duplicate = owner;
  }
  DWORD flags;
  EXPECT_FALSE(GetHandleInformation(duplicate, &flags));
  EXPECT_TRUE(GetHandleInformation(raw.h, &flags));
}

TEST(THandle, DetachedHandleStaysOpenAndAttachedOneIsClosed) {
  RawEvent raw;
  HANDLE detached;
  {
    THandle owner(raw.h);
    detached = owner.DetachHandle();
    EXPECT_EQ(static_cast<void*>(owner), INVALID_HANDLE_VALUE);
  }
  EXPECT_TRUE(SetEvent(detached));
  {
    THandle owner;
    owner.AttachHandle(detached);  // takes over without duplicating
    EXPECT_EQ(static_cast<void*>(owner), detached);
  }
  DWORD flags;
  EXPECT_FALSE(GetHandleInformation(detached, &flags));  // closed by the owner
}

TEST(THandle, AssignmentClosesTheOldHandleAndDuplicatesTheNew) {
  RawEvent first, second;
  THandle owner(first.h);
  HANDLE old = owner;
  owner = second.h;
  DWORD flags;  // closed: either gone or already reused for the duplicate
  EXPECT_TRUE(static_cast<void*>(owner) == old || !GetHandleInformation(old, &flags));
  EXPECT_NE(static_cast<void*>(owner), second.h);
  ASSERT_TRUE(SetEvent(owner));
  EXPECT_TRUE(IsSignaled(second.h));

  THandle other(first.h);
  other = owner;
  EXPECT_NE(static_cast<void*>(other), static_cast<void*>(owner));
  EXPECT_TRUE(IsSignaled(other));
  const THandle& same = other;
  other = same;  // self-assignment leaves the object empty
  EXPECT_EQ(static_cast<void*>(other), INVALID_HANDLE_VALUE);
}

TEST(THandle, FailedCloseOrDuplicateThrows) {
  THandle null_handle(nullptr);
  try {
    null_handle.CloseHandle();
    FAIL() << "closing the null handle succeeded";
  } catch (const ESystemException& e) {
    EXPECT_EQ(CodeOf(e), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(std::string(e.get_value("Text")).empty());
  }
  EXPECT_EQ(static_cast<void*>(null_handle), INVALID_HANDLE_VALUE);

  EXPECT_THROW(
      {
        THandle bogus;
        bogus.AttachHandle(BogusHandle());
      },
      ESystemException);
  EXPECT_THROW(THandle{BogusHandle()}, ESystemException);  // duplicating it
}

TEST(THandle, WaitReportsTimeOutSignalAndFailure) {
  RawEvent raw;
  THandle event(raw.h);
  EXPECT_EQ(event.WaitForSingleObject(0, FALSE), static_cast<DWORD>(WAIT_TIMEOUT));
  SetEvent(raw.h);
  EXPECT_EQ(event.WaitForSingleObject(1000, TRUE), static_cast<DWORD>(WAIT_OBJECT_0));
  try {
    THandle(nullptr).WaitForSingleObject(0, FALSE);
    FAIL() << "waiting on the null handle succeeded";
  } catch (const ESystemException& e) {
    EXPECT_EQ(CodeOf(e), ERROR_INVALID_HANDLE);
  }
}

}  // namespace
