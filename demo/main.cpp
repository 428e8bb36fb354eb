// A guided tour of qz, one subsystem at a time; run it with scripts/demo.
#include "tour.h"

#include <qz/qz.h>

int main() {
  std::printf("qz: a foundation library for Windows C++ programs\n");
  try {
    tour_core();
    tour_value();
    tour_errors();
    tour_time();
    tour_conversions();
    tour_os();
    tour_logging();
    tour_multi_lock();
    tour_com();
    tour_symbols();
    tour_diagnostics();
    tour_threads();
  } catch (const EGeneric& e) {
    std::printf("unexpected error:\n%s\n", e.what());
    return 1;
  }
  return 0;
}
