// Waiting for a 32-bit word to change, the way the slim reader/writer lock
// waits: WaitOnAddress and WakeByAddressAll or WakeByAddressSingle, from Windows 8 on (under Wine a
// futex, with no call to the Wine server). Looked up at run time, since the
// library also runs on Windows 7, where word_wait_available() says false.
//
// Such a wait is not alertable: queued procedure calls wait for the next
// alertable wait. Callers keep it short.
//
// Thread safety: any thread.
#pragma once

#include <windows.h>

#include <atomic>

bool word_wait_available() noexcept;
// Waits while `word` holds `seen`, up to `ms` milliseconds; false when the
// time passed with the word unchanged and nobody waking it.
bool wait_while_word_is(const std::atomic<unsigned int>& word, unsigned int seen, DWORD ms) noexcept;
// Wakes every thread waiting on `word`, or one of them.
void wake_word_waiters(const std::atomic<unsigned int>& word) noexcept;
void wake_one_word_waiter(const std::atomic<unsigned int>& word) noexcept;
