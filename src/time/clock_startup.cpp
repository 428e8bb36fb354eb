// The statics of the stopwatches, made while qz.dll loads.
//
// Their order is part of the library's start-up sequence: the user-default
// locale first, then the counter frequency, then its conversion to double,
// then the current-thread pseudo-handle. Within one source file C++
// initialises in order of definition, so the four live here together, in
// that order. The locale belongs to another file; it is a function-local
// static, and asking for it before reading the frequency makes sure it is
// built first however the linker orders the object files (with this
// toolchain the object files' initialisers run in reverse link order, so
// the file order alone would build it last).
#include <qz/core/user_locale.h>
#include <qz/time/pcounter.h>
#include <qz/time/thread_times.h>

namespace {

LARGE_INTEGER read_frequency() noexcept {
  user_default_locale();
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  return frequency;
}

}  // namespace

LARGE_INTEGER _PerformanceCounterFrequency = read_frequency();

const double _pcounter_t::frequency = static_cast<double>(_PerformanceCounterFrequency.QuadPart);

const HANDLE _thread_common_times_t::current_thread = GetCurrentThread();

const double _thread_common_times_t::frequency = 10000000.0;

FILETIME _thread_common_times_t::dummy_time;
