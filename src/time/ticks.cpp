#include <qz/time/ticks.h>

#include <windows.h>

_ticks_t::_ticks_t() noexcept : ticks(GetTickCount()) {}

void _ticks_t::restart() noexcept { ticks = GetTickCount(); }

// Unsigned 32-bit subtraction absorbs one wrap of the tick count.
unsigned long _ticks_t::get_elapsed_ticks() const noexcept { return GetTickCount() - ticks; }

double _ticks_t::get_elapsed() const noexcept {
  return static_cast<double>(get_elapsed_ticks()) / 1000.0;
}
