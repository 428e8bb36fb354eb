// Processor faults (access violations, division by zero, stack overflow) as
// ordinary C++ exceptions: EStructuredException and EStackOverflowException.
//
// A thread translates faults once it has constructed a
// redirect_structured_exceptions (for the rest of its life) or while a
// temporary_redirect_structured_exceptions lives (the previous translator is
// put back when it ends). Every thread the library starts does the former.
// Code that should catch faults is built with -fnon-call-exceptions, so that
// a faulting load or store can unwind through its own frame. Both guards also
// ask the system to keep 16 KB of the thread's stack for handling its
// overflow.
//
// What is translated: access violations, in-page errors, illegal and
// privileged instructions, misalignment, integer and floating-point faults,
// array bounds and stack overflow (EStackOverflowException; call
// EStackOverflowException::ResetStack() after catching one). Breakpoints,
// single steps, exceptions raised by software and non-continuable ones keep
// their usual course, and so does every fault of a thread without a guard.
// Translation happens when the fault is raised, before any frame-based
// handler looks at it: on a translating thread, code that probes memory
// and means to handle its own fault in a __try block gets the exception
// thrown through it instead. Translation does not depend on UseVEH, which
// switches only the handler's work at C++ throws.
//
// Thread safety: the translator is per thread; the guards act only on the
// thread that constructs them and must be destroyed on it.
#pragma once

#include <qz/export.h>

// Installs the library's translator for the calling thread, for good.
class QZ_API redirect_structured_exceptions {
 public:
  redirect_structured_exceptions();
};

// Installs the library's translator for the calling thread while it lives.
class QZ_API temporary_redirect_structured_exceptions {
 public:
  temporary_redirect_structured_exceptions();
  ~temporary_redirect_structured_exceptions();
  temporary_redirect_structured_exceptions(const temporary_redirect_structured_exceptions&) = delete;
  temporary_redirect_structured_exceptions& operator=(const temporary_redirect_structured_exceptions&) = delete;

 private:
  void* previous;
};
