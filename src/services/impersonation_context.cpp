#include <qz/core/com_types.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/global_streams.h>
#include <qz/os/handle.h>
#include <qz/services/impersonation_context.h>

#include <exception>
#include <vector>

const bool CImpersonationContext::NeedImpersonation = true;

namespace {

const char* level_name(DWORD level) {
  switch (level) {
    case SecurityAnonymous: return "SecurityAnonymous";
    case SecurityIdentification: return "SecurityIdentification";
    case SecurityImpersonation: return "SecurityImpersonation";
    case SecurityDelegation: return "SecurityDelegation";
    default: return "Unknown";
  }
}

// The token's user; empty names when the system cannot tell.
void user_of(HANDLE token, std::wstring& domain, std::wstring& account) {
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<BYTE> user(size ? size : 1);
  if (!GetTokenInformation(token, TokenUser, user.data(), size, &size)) return;
  PSID sid = reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
  // Account and domain names are at most 256 characters (UNLEN, DNLEN are less).
  wchar_t account_name[257] = {}, domain_name[257] = {};
  DWORD account_size = 257, domain_size = 257;
  SID_NAME_USE use;
  if (!LookupAccountSidW(nullptr, sid, account_name, &account_size, domain_name, &domain_size, &use))
    return;
  domain = domain_name;
  account = account_name;
}

// Tells Debug who the thread is acting as; quiet when the token cannot be read.
void log_impersonation() {
  HANDLE raw = nullptr;
  if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &raw)) return;
  THandle token;
  token.AttachHandle(raw);
  SECURITY_IMPERSONATION_LEVEL level = SecurityAnonymous;
  DWORD size = 0;
  if (!GetTokenInformation(raw, TokenImpersonationLevel, &level, sizeof level, &size)) return;
  std::wstring domain, account;
  user_of(raw, domain, account);
  TDebugStreamSession(Debug) << "(!) Impersonated with level " << level_name(level) << " as " << domain
                             << '\\' << account << '\n';
}

}  // namespace

CImpersonationContext::CImpersonationContext(bool throwOnFailure) : impersonating(false) {
  const HRESULT hr = CoImpersonateClient();
  if (SUCCEEDED(hr))
    impersonating = true;
  else if (throwOnFailure)
    _com_issue_error(hr);
}

// A destructor that runs during unwinding must not throw: the diagnostic is
// best effort, and the revert's result has nobody to go to.
CImpersonationContext::~CImpersonationContext() {
  if (!impersonating) return;
  if (std::uncaught_exceptions() > 0 && Debug.GetEnabled()) {
    try {
      log_impersonation();
    } catch (...) {
    }
  }
  CoRevertToSelf();
}
