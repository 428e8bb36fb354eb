// The stack a thread keeps back for handling its own overflow (private to
// the library: every thread the library starts asks for it).
#pragma once

// The stack every library thread keeps for its overflow handling.
constexpr unsigned long kLibraryThreadStackGuarantee = 16384;

// Asks the system to keep `bytes` of the calling thread's stack for
// handling a stack overflow; does nothing on a system without
// SetThreadStackGuarantee. False when the system refused.
bool GuaranteeStackForOverflow(unsigned long bytes = kLibraryThreadStackGuarantee);
