#include <qz/time/pcounter.h>

namespace {

__int64 read_counter() noexcept {
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  return now.QuadPart;
}

}  // namespace

_pcounter_t::_pcounter_t() noexcept : counter(read_counter()) {}

void _pcounter_t::restart() noexcept { counter = read_counter(); }

__int64 _pcounter_t::get_elapsed_ticks() const noexcept { return read_counter() - counter; }

double _pcounter_t::get_elapsed() const noexcept {
  return static_cast<double>(get_elapsed_ticks()) / frequency;
}

__int64 _pcounter_t::get_elapsed_ticks_and_restart() noexcept {
  const __int64 now = read_counter();
  const __int64 elapsed = now - counter;
  counter = now;
  return elapsed;
}

double _pcounter_t::get_elapsed_restart() noexcept {
  return static_cast<double>(get_elapsed_ticks_and_restart()) / frequency;
}
