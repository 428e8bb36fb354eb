#include "sync/word_wait.h"

namespace {

typedef BOOL(WINAPI* wait_on_address_fn)(volatile void* address, void* compare, SIZE_T size, DWORD ms);
typedef void(WINAPI* wake_by_address_fn)(void* address);

struct word_wait_functions {
  wait_on_address_fn wait = nullptr;
  wake_by_address_fn wake_all = nullptr;
  wake_by_address_fn wake_one = nullptr;

  word_wait_functions() {
    const HMODULE module = GetModuleHandleW(L"kernelbase.dll");
    if (module == nullptr) return;
    wait = reinterpret_cast<wait_on_address_fn>(reinterpret_cast<void*>(GetProcAddress(module, "WaitOnAddress")));
    wake_all =
        reinterpret_cast<wake_by_address_fn>(reinterpret_cast<void*>(GetProcAddress(module, "WakeByAddressAll")));
    wake_one =
        reinterpret_cast<wake_by_address_fn>(reinterpret_cast<void*>(GetProcAddress(module, "WakeByAddressSingle")));
    if (wake_all == nullptr || wake_one == nullptr) wait = nullptr;
  }
};

const word_wait_functions& functions() noexcept {
  static const word_wait_functions found;
  return found;
}

// The functions take the word's address; std::atomic<unsigned int> is the
// plain word underneath.
static_assert(sizeof(std::atomic<unsigned int>) == sizeof(unsigned int), "atomic word is not a plain word");

void* address_of(const std::atomic<unsigned int>& word) noexcept {
  return const_cast<std::atomic<unsigned int>*>(&word);
}

}  // namespace

bool word_wait_available() noexcept { return functions().wait != nullptr; }

bool wait_while_word_is(const std::atomic<unsigned int>& word, unsigned int seen, DWORD ms) noexcept {
  if (functions().wait(address_of(word), &seen, sizeof seen, ms)) return true;
  return GetLastError() != ERROR_TIMEOUT;
}

void wake_word_waiters(const std::atomic<unsigned int>& word) noexcept { functions().wake_all(address_of(word)); }

void wake_one_word_waiter(const std::atomic<unsigned int>& word) noexcept {
  functions().wake_one(address_of(word));
}
