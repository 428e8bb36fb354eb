#include <qz/sync/critical_section.h>

#include <qz/core/throw.h>

#include <cstring>

TCriticalSection::TCriticalSection() : ILock(), CRITICAL_SECTION() {
  InitializeCriticalSection(this);
}

// The raw copy is deliberate: copying an unused lock is the only meaningful
// use, and a copy then owns the system's record exactly as the source did.
TCriticalSection::TCriticalSection(const TCriticalSection& other) : ILock(other), CRITICAL_SECTION() {
  std::memcpy(static_cast<CRITICAL_SECTION*>(this), static_cast<const CRITICAL_SECTION*>(&other),
              sizeof(CRITICAL_SECTION));
}

TCriticalSection& TCriticalSection::operator=(const TCriticalSection& other) {
  std::memcpy(static_cast<CRITICAL_SECTION*>(this), static_cast<const CRITICAL_SECTION*>(&other),
              sizeof(CRITICAL_SECTION));
  return *this;
}

TCriticalSection::~TCriticalSection() { DeleteCriticalSection(this); }

bool TCriticalSection::Lock(unsigned int /*timeout*/) {
  ThrowNotImplemented("CriticalSection", 18, "TCriticalSection::Lock");
}

void TCriticalSection::Lock() { EnterCriticalSection(this); }

void TCriticalSection::Unlock() { LeaveCriticalSection(this); }
