// An exception's message as a private copy (private to the library).
//
// what() of an EGeneric points into one process-wide buffer that the next
// what() call on any thread rewrites. Library code that keeps or prints an
// exception's text (sessions, thread runaway lines, dumps, COM paths) takes
// this copy instead, so two threads never see each other's messages.
#pragma once

#include <exception>
#include <string>

// The text what() would return, built without the shared buffer for an
// EGeneric and copied from what() for any other exception.
std::string exception_text(const std::exception& e);
