// Writing a dump whose module word the caller already knows (private to the
// library): the fault and throw diagnostics walk the stack once and name the
// dump from that walk. See <qz/diagnostics/minidump.h> for the file name.
//
// Thread safety: any thread; as WriteMiniDump.
#pragma once

#include <windows.h>

#include <string>

// Composes the path from `module` (the program's name when empty) and the
// kind word of `pointers`' record, creates its last directory level and
// writes the dump. The path, or "" when nothing was written.
std::string save_minidump_named(EXCEPTION_POINTERS* pointers, unsigned long type,
                                unsigned long thread_id, std::string module);
