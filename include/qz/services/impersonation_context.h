// CImpersonationContext: a COM server thread acting as its client for one
// scope.
//
//   HRESULT Server::Open(BSTR path) {
//     CImpersonationContext as_client(CImpersonationContext::NeedImpersonation);
//     ...  // file access is checked against the client's rights
//   }      // CoRevertToSelf
//
// The constructor calls CoImpersonateClient. When that fails (outside a COM
// call it answers RPC_E_CALL_COMPLETE) the object stays inactive, or, when
// asked with throwOnFailure, throws EComException with the HRESULT as its
// "Code". An active object reverts with CoRevertToSelf when it ends. If it
// ends because an exception unwinds the scope, it first tells Debug (while
// Debug has writers) who the thread was acting as:
//   (!) Impersonated with level SecurityImpersonation as DOMAIN\user
// with the level's name (SecurityAnonymous, SecurityIdentification,
// SecurityImpersonation, SecurityDelegation, or Unknown) and a line feed.
//
// Thread safety: impersonation belongs to the calling thread; the object is
// made and ended on one thread.
#pragma once

#include <qz/export.h>

#include <windows.h>

class QZ_API CImpersonationContext {
 public:
  // True: the value to pass for a server that cannot go on as itself.
  static const bool NeedImpersonation;

  explicit CImpersonationContext(bool throwOnFailure = false);
  ~CImpersonationContext();
  CImpersonationContext(const CImpersonationContext&) = delete;
  CImpersonationContext& operator=(const CImpersonationContext&) = delete;

  // Whether this object has the thread impersonating.
  bool IsImpersonating() const noexcept { return impersonating; }

 protected:
  bool impersonating;
};
