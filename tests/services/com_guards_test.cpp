#include <qz/errors/exceptions.h>
#include <qz/logging/global_streams.h>
#include <qz/services/com_initialize.h>
#include <qz/services/impersonation_context.h>

#include "support/captured_stream.h"
#include "support/error_code.h"
#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qz_test::CapturedStream;
using qz_test::CodeOf;

// The calling thread's apartment, by name.
std::string Apartment() {
  APTTYPE type;
  APTTYPEQUALIFIER qualifier;
  const HRESULT hr = CoGetApartmentType(&type, &qualifier);
  if (hr == CO_E_NOTINITIALIZED) return "none";
  if (FAILED(hr)) return "error";
  return type == APTTYPE_MTA ? "MTA" : "STA";
}

// On a thread of its own (no earlier COM state): the apartment before,
// inside the guard `Outer`, inside a second `Outer` (S_FALSE), when a guard
// `Other` for the other kind is refused, and after.
template <class Outer, class Other>
std::string ApartmentsThrough() {
  std::string seen;
  qz_test::WorkerThread thread([&seen] {
    seen = Apartment();
    {
      Outer guard;
      seen += " " + Apartment();
      { Outer again; }
      seen += " " + Apartment();
      try {
        Other refused;
        seen += " granted";
      } catch (const EComException& e) {
        seen += CodeOf(e) == RPC_E_CHANGED_MODE ? " refused" : " other error";
      }
    }
    seen += " " + Apartment();
  });
  EXPECT_TRUE(thread.Join(30000));
  EXPECT_EQ(thread.error(), "");
  return seen;
}

TEST(ComGuards, HoldTheirApartmentForTheirScope) {
  EXPECT_EQ((ApartmentsThrough<class CoInitialize, class CoInitializeEx>()), "none STA STA refused none");
  EXPECT_EQ((ApartmentsThrough<class CoInitializeEx, class CoInitialize>()), "none MTA MTA refused none");
}

// Only a COM call lets CoImpersonateClient succeed; the thread impersonates
// itself instead, and the object is told that it did.
struct SelfImpersonation : CImpersonationContext {
  SelfImpersonation() { impersonating = ImpersonateSelf(SecurityImpersonation) != FALSE; }
};

std::string ThreadUser() {
  wchar_t name[257];
  DWORD size = 257;
  GetUserNameW(name, &size);
  return std::string(name, name + wcslen(name));  // ASCII under the test prefix
}

// Outside a COM call a context throws when asked to impersonate; only
// unwinding an active one writes a line.
TEST(CImpersonationContext, UnwindingTellsDebugWhoTheThreadActedAs) {
  CapturedStream debug(Debug);
  try {
    CImpersonationContext strict(CImpersonationContext::NeedImpersonation);
    FAIL() << "impersonated outside a COM call";
  } catch (const EComException& e) {
    EXPECT_EQ(CodeOf(e), RPC_E_CALL_COMPLETE);
  }
  {
    SelfImpersonation calm;
    ASSERT_TRUE(calm.IsImpersonating());
  }
  RevertToSelf();
  EXPECT_EQ(debug.text(), "");  // no exception, no line
  try {
    SelfImpersonation unwound;
    ASSERT_TRUE(unwound.IsImpersonating());
    throw std::runtime_error("request failed");
  } catch (const std::runtime_error&) {
  }
  RevertToSelf();
  const std::string prefix = "(!) Impersonated with level SecurityImpersonation as ";
  ASSERT_EQ(debug.text().compare(0, prefix.size(), prefix), 0) << debug.text();
  const std::string who = debug.text().substr(prefix.size());
  EXPECT_NE(who.find('\\'), std::string::npos) << who;
  EXPECT_EQ(who.substr(who.find('\\') + 1), ThreadUser() + "\n");
}

}  // namespace
