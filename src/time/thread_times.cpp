#include <qz/time/thread_times.h>

namespace {

__int64 as_int64(const FILETIME& time) noexcept {
  ULARGE_INTEGER value;
  value.LowPart = time.dwLowDateTime;
  value.HighPart = time.dwHighDateTime;
  return static_cast<__int64>(value.QuadPart);
}

// One GetThreadTimes call; the outputs nobody wants go to dummy_time.
void read_thread_times(FILETIME* kernel, FILETIME* user) noexcept {
  FILETIME& dummy = _thread_common_times_t::dummy_time;
  GetThreadTimes(_thread_common_times_t::current_thread, &dummy, &dummy,
                 kernel != nullptr ? kernel : &dummy, user != nullptr ? user : &dummy);
}

__int64 kernel_now() noexcept {
  FILETIME kernel;
  read_thread_times(&kernel, nullptr);
  return as_int64(kernel);
}

__int64 user_now() noexcept {
  FILETIME user;
  read_thread_times(nullptr, &user);
  return as_int64(user);
}

constexpr double kUnitsPerSecond = 10000000.0;

}  // namespace

_thread_kernel_times_t::_thread_kernel_times_t() noexcept : kernel(kernel_now()) {}
void _thread_kernel_times_t::restart() noexcept { kernel = kernel_now(); }
__int64 _thread_kernel_times_t::get_elapsed_ticks() const noexcept { return kernel_now() - kernel; }
double _thread_kernel_times_t::get_elapsed() const noexcept {
  return static_cast<double>(get_elapsed_ticks()) / kUnitsPerSecond;
}

_thread_user_times_t::_thread_user_times_t() noexcept : user(user_now()) {}
void _thread_user_times_t::restart() noexcept { user = user_now(); }
__int64 _thread_user_times_t::get_elapsed_ticks() const noexcept { return user_now() - user; }
double _thread_user_times_t::get_elapsed() const noexcept {
  return static_cast<double>(get_elapsed_ticks()) / kUnitsPerSecond;
}

_thread_times_t::_thread_times_t() noexcept : kernel(0), user(0) { restart(); }

void _thread_times_t::restart() noexcept {
  FILETIME kernel_time, user_time;
  read_thread_times(&kernel_time, &user_time);
  kernel = as_int64(kernel_time);
  user = as_int64(user_time);
}

__int64 _thread_times_t::get_elapsed_ticks() const noexcept {
  FILETIME kernel_time, user_time;
  read_thread_times(&kernel_time, &user_time);
  return (as_int64(kernel_time) - kernel) + (as_int64(user_time) - user);
}

double _thread_times_t::get_elapsed() const noexcept {
  return static_cast<double>(get_elapsed_ticks()) / kUnitsPerSecond;
}
