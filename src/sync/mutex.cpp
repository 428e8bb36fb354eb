#include <qz/core/throw.h>
#include <qz/sync/mutex.h>

#include "sync/named_object_security.h"

TMutex::TMutex() { CreateMutexW(false); }

TMutex::TMutex(const char* name) { CreateMutexW(name, false); }

TMutex::TMutex(const wchar_t* name) { CreateMutexW(name, false); }

void TMutex::CreateMutexW(bool initial_owner) {
  StoreCreated(::CreateMutexW(nullptr, initial_owner, nullptr));
}

void TMutex::CreateMutexW(const char* name, bool initial_owner) {
  qz_detail::named_object_security security(qz_detail::named_object_access::creator_default);
  StoreCreated(::CreateMutexA(security.get(), initial_owner, name));
}

void TMutex::CreateMutexW(const wchar_t* name, bool initial_owner) {
  qz_detail::named_object_security security(qz_detail::named_object_access::creator_default);
  StoreCreated(::CreateMutexW(security.get(), initial_owner, name));
}

void TMutex::OpenMutexW(const char* name, unsigned long access) {
  StoreCreated(::OpenMutexA(access, FALSE, name));
}

void TMutex::OpenMutexW(const wchar_t* name, unsigned long access) {
  StoreCreated(::OpenMutexW(access, FALSE, name));
}

// An abandoned mutex is ours all the same: its former owner is gone, and
// refusing it would leave the lock unusable for good.
bool TMutex::Lock(unsigned int timeout) {
  const DWORD result = WaitForSingleObject(timeout, TRUE);
  return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

void TMutex::Lock() {
  for (;;) {
    const DWORD result = WaitForSingleObject(INFINITE, TRUE);
    if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) return;
  }
}

void TMutex::Unlock() {
  if (!::ReleaseMutex(handle)) ThrowSystemException();
}
