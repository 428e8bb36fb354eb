// The process-wide vectored exception handler, as the rest of the library
// sees it (private to the library).
#pragma once

// Whether the library's vectored handler is registered, so that a throw gets
// its stack and dump from the handler rather than from the exception's
// constructor.
bool vectored_handler_installed();
