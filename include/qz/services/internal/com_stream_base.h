// CComStreamBase: what qz's two IStream classes share. It answers
// QueryInterface and refuses the operations neither stream supports; the
// streams add reading, writing, seeking and their own counting.
//
// QueryInterface hands out the IStream interface (after AddRef) for
// IID_IUnknown, IID_ISequentialStream and IID_IStream, and E_NOINTERFACE
// (with a null result) for anything else. SetSize, CopyTo, Revert,
// LockRegion, UnlockRegion and Clone answer E_NOTIMPL.
//
// Thread safety: as the derived stream.
#pragma once

#include <qz/core/com_types.h>
#include <qz/core/smart_ptr.h>
#include <qz/export.h>

#include <windows.h>
#include <objidl.h>

// IStreamPtr, the COM smart pointer the streams are handed out in. The
// toolchain's comdef.h names no interface smart pointers (its list needs the
// other compiler's __uuidof), so the one qz uses is declared here.
#if !USE___UUIDOF
_COM_SMARTPTR_TYPEDEF(IStream, __uuidof(IStream));
#endif

class QZ_API CComStreamBase : public virtual SmartPtrObj, public IStream {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  // COM's count is the SmartPtrObj count: SmartPtr and COM references count
  // together. SmartPtr<const ...> of a stream counts through the second form.
  ULONG STDMETHODCALLTYPE AddRef() override;
  using SmartPtrObj::AddRef;
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override;
  HRESULT STDMETHODCALLTYPE Revert() override;
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
  HRESULT STDMETHODCALLTYPE Clone(IStream** copy) override;

 protected:
  CComStreamBase() = default;
  CComStreamBase(const CComStreamBase&) = default;
  CComStreamBase& operator=(const CComStreamBase&) = default;
  ~CComStreamBase() override;
};
