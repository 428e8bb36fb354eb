#include <qz/services/internal/com_stream_base.h>

CComStreamBase::~CComStreamBase() = default;

ULONG CComStreamBase::AddRef() { return static_cast<ULONG>(SmartPtrObj::AddRef()); }

HRESULT CComStreamBase::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  if (iid == IID_IUnknown || iid == IID_ISequentialStream || iid == IID_IStream) {
    IStream* stream = this;
    stream->AddRef();
    *object = stream;
    return S_OK;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT CComStreamBase::SetSize(ULARGE_INTEGER) { return E_NOTIMPL; }

HRESULT CComStreamBase::CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) {
  return E_NOTIMPL;
}

HRESULT CComStreamBase::Revert() { return E_NOTIMPL; }

HRESULT CComStreamBase::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) { return E_NOTIMPL; }

HRESULT CComStreamBase::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) { return E_NOTIMPL; }

HRESULT CComStreamBase::Clone(IStream** copy) {
  if (copy) *copy = nullptr;
  return E_NOTIMPL;
}
