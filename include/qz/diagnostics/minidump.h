// Crash dumps of the whole process, written by the system's debug-help
// minidump writer.
//
// EGeneric::SaveMiniDump composes the file name (see below) and calls
// WriteMiniDump; the exceptions of qz call it themselves as the dump settings
// in <qz/errors/tuning.h> say, and carry the path as their "MiniDump" value.
// Every setting is read at each dump, so a program may change them at any
// time.
//
// File name: MiniDumpFileFormat filled with the module word, the kind word,
// then the local time (taken once, at the start) as year, month, day, hour,
// minute, second and milliseconds:
//
//   Dumps\app_C0000005_2024_01_31_23_59_58_123.dmp
//
//   module word  the "ModuleName" of a thrown EGeneric that has one; else the
//                module of the first frame outside SkipModulesForError (the
//                stack walked from the fault's context, or from the caller
//                without one); else the program's own file name without
//                extension
//   kind word    "Dump" without an exception record; for a C++ throw the
//                thrown type's readable name without a leading "std::"
//                ("runtime_error", "EGeneric"), "C++" when the type is not
//                known; for any other code the code in upper-case hex
//                ("C0000005")
//
// "<", ">" and ":" are taken out of both words. The last directory level of
// the path is created when missing (only that one). A dump that cannot be
// written leaves no file and gives an empty path.
//
// Thread safety: any thread; dumps are written one at a time, serialised
// with all other symbol-engine work.
#pragma once

#include <qz/export.h>

#include <string>

struct _EXCEPTION_POINTERS;

// Writes one dump of the current process to `path` (replacing any file
// there). With `pointers`, the dump records that exception as raised on
// thread `thread_id`. `type` holds the minidump writer's kind flags (0: the
// normal, smallest kind). True on success; any failure, the writer's own
// errors included, gives false.
QZ_API bool WriteMiniDump(const std::string& path, _EXCEPTION_POINTERS* pointers,
                          unsigned long type, unsigned long thread_id);
