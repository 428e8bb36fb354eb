// Where a C++ throw happened (private to the library).
//
// The context of a throw's exception record is the context inside the
// system's raise function, called by the C++ runtime's throw machinery,
// called by the function that threw. Stacks, error addresses and dump names
// should start at that function, not in the runtime: the toolchain knows
// which frames are its own (internal/throw_site_<toolchain>.cpp).
#pragma once

#include <windows.h>

// `raised` stepped out of the frames of the system's raise function and the
// C++ runtime's throw machinery; `raised` itself when it cannot be stepped.
CONTEXT throw_site_context(const CONTEXT& raised);
