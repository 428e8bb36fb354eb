// Bookkeeping that an interruption must not cut in half (private to the
// library).
#pragma once

#include <qz/errors/exceptions.h>

// Runs `step` to its end: should an interruption (EThreadInterrupt from a
// procedure call run by one of its alertable waits) leave it, it runs
// again. The call that threw is gone once it ran, so the second attempt
// meets no interruption but a new one. True when an interruption came,
// which the caller then honours once its books are straight. Only for steps
// that an interruption leaves with nothing changed: a lock wait that throws
// takes nothing, so a step that changes its state under one lock qualifies.
template <class Step>
bool run_uninterrupted(Step step) {
  bool interrupted = false;
  for (;;) {
    try {
      step();
      return interrupted;
    } catch (const EThreadInterrupt&) {
      interrupted = true;
    }
  }
}
