// Start-up and shut-down of the fault machinery.
//
// Everything here depends on what came before it, so it lives in one file,
// where globals are constructed in the order they are written and destroyed
// in reverse (the order across files is the linker's): the handler's
// thread-local slots first, then the stack-overflow hand-off, then the
// handler's registration, last of all the pure-virtual-call handler. The
// handler can run the moment it is registered, and by then everything it
// touches exists.
#include "faults/fault_startup.h"
#include "faults/vectored_handler.h"

#include <qz/core/throw.h>
#include <qz/errors/tuning.h>

#include <stdlib.h>

namespace {

class tls_slot {
 public:
  tls_slot() : index_(TlsAlloc()) {
    if (index_ == TLS_OUT_OF_INDEXES) ThrowSystemException();
  }
  ~tls_slot() {
    // Nothing can report a failure this late; a slot that will not go is
    // the process's to reclaim.
    TlsFree(index_);
  }
  tls_slot(const tls_slot&) = delete;
  tls_slot& operator=(const tls_slot&) = delete;

  DWORD index() const { return index_; }

 private:
  DWORD index_;
};

// The handler is registered first in the chain, so that it sees every
// exception before any frame-based handler runs. It is removed again at
// unload: a handler left registered after its code is unmapped would crash
// the process at its next exception.
class vectored_registration {
 public:
  vectored_registration() {
    HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    add_ = reinterpret_cast<add_fn>(
        reinterpret_cast<void*>(GetProcAddress(kernel, "AddVectoredExceptionHandler")));
    remove_ = reinterpret_cast<remove_fn>(
        reinterpret_cast<void*>(GetProcAddress(kernel, "RemoveVectoredExceptionHandler")));
    if (add_ && remove_) handle_ = add_(1, &qz_vectored_handler);
  }
  ~vectored_registration() {
    if (handle_) remove_(handle_);
  }
  vectored_registration(const vectored_registration&) = delete;
  vectored_registration& operator=(const vectored_registration&) = delete;

  bool installed() const { return handle_ != nullptr; }

 private:
  using add_fn = PVOID(WINAPI*)(ULONG, PVECTORED_EXCEPTION_HANDLER);
  using remove_fn = ULONG(WINAPI*)(PVOID);
  add_fn add_ = nullptr;
  remove_fn remove_ = nullptr;
  void* handle_ = nullptr;
};

// The runtime's pure-virtual-call handler throws EPurecallException.
class purecall_installation {
 public:
  purecall_installation() : previous_(_set_purecall_handler(&_my_purecall_translator)) {}
  ~purecall_installation() { _set_purecall_handler(previous_); }
  purecall_installation(const purecall_installation&) = delete;
  purecall_installation& operator=(const purecall_installation&) = delete;

 private:
  _purecall_handler previous_;
};

// In start-up order.
tls_slot reentry_slot;
tls_slot translator_slot;
stack_overflow_handoff handoff;
vectored_registration registration;
purecall_installation purecall;

}  // namespace

DWORD vectored_reentry_slot() { return reentry_slot.index(); }
DWORD fault_translator_slot() { return translator_slot.index(); }
stack_overflow_handoff& overflow_handoff() { return handoff; }
bool vectored_handler_at_work() { return registration.installed() && UseVEH; }
