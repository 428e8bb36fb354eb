#include <qz/core/throw.h>
#include <qz/sync/semaphore.h>

#include "sync/named_object_security.h"

TSemaphore::TSemaphore(int count) { CreateSemaphoreW(count, count); }

TSemaphore::TSemaphore(int maximum, int initial) { CreateSemaphoreW(maximum, initial); }

TSemaphore::TSemaphore(const char* name, int maximum, int initial) {
  CreateSemaphoreW(maximum, initial, name);
}

TSemaphore::TSemaphore(const wchar_t* name, int maximum, int initial) {
  CreateSemaphoreW(maximum, initial, name);
}

void TSemaphore::CreateSemaphoreW(long maximum, long initial) {
  StoreCreated(::CreateSemaphoreW(nullptr, initial, maximum, nullptr));
}

void TSemaphore::CreateSemaphoreW(long maximum, long initial, const char* name) {
  qz_detail::named_object_security security(qz_detail::named_object_access::creator_default);
  StoreCreated(::CreateSemaphoreA(security.get(), initial, maximum, name));
}

void TSemaphore::CreateSemaphoreW(long maximum, long initial, const wchar_t* name) {
  qz_detail::named_object_security security(qz_detail::named_object_access::creator_default);
  StoreCreated(::CreateSemaphoreW(security.get(), initial, maximum, name));
}

void TSemaphore::OpenSemaphoreW(const char* name, unsigned long access) {
  StoreCreated(::OpenSemaphoreA(access, FALSE, name));
}

void TSemaphore::OpenSemaphoreW(const wchar_t* name, unsigned long access) {
  StoreCreated(::OpenSemaphoreW(access, FALSE, name));
}

bool TSemaphore::Lock(unsigned int timeout) {
  return WaitForSingleObject(timeout, TRUE) == WAIT_OBJECT_0;
}

void TSemaphore::Lock() {
  while (WaitForSingleObject(INFINITE, TRUE) != WAIT_OBJECT_0) {
  }
}

void TSemaphore::Unlock() { ReleaseSemaphore(1); }

long TSemaphore::ReleaseSemaphore(long count) {
  LONG before = 0;
  if (!::ReleaseSemaphore(handle, count, &before)) ThrowSystemException();
  return before;
}
