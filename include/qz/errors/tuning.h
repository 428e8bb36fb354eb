// Process-wide switches that callers set at start-up, before the library's
// first exception; reading them from several threads is safe, changing them
// while exceptions are in flight is not.
#pragma once

#include <qz/export.h>

#include <string>

// The vectored handler acts on exceptions (it stays registered either way).
extern QZ_API bool UseVEH;  // true
// Module names, separated by ";", never blamed for an error.
extern QZ_API std::string SkipModulesForError;
// "kernel32;ntdll;nt;qz;MSVCR90D;MSVCR90;MSVCP90D;MSVCP90;KERNELBASE"
extern QZ_API bool SaveMiniDumpOnCppException;         // false
extern QZ_API bool SaveMiniDumpOnStructuredException;  // true
// Exceptions get "ModuleName", "AddressName" and "Stack" values. Each such
// throw walks and names its stack: about 0.07 ms under Wine while the
// program holds the symbol engine (SymInitialize() once at start-up, e.g. in
// main), but 0.5 to 1 s when it does not, since the throw then loads and
// unloads the debug-help library itself. A plain throw costs about 2 us.
extern QZ_API bool ExtendDebugInformationFromException;  // false
// Dump kind flags for the minidump writer (0: the normal, smallest kind).
extern QZ_API unsigned long MiniDumpType;  // 0
// Dump path pattern, relative to the current directory: module word, kind
// word, then year, month, day, hour, minute, second and milliseconds.
extern QZ_API const char* MiniDumpFileFormat;
// Thrown type names that never write a dump (substring match).
extern QZ_API std::string MiniDumpExcludedTypes;  // "EThreadInterrupt;EStructuredException;C++"

// Where the symbol engine takes function names and source lines from, and
// how it walks stacks. The debug-help library reads no DWARF on Windows and
// at most version 4 under Wine; the library's own reader reads versions 2 to
// 5 and the PE symbol table straight from each module's file, so a plain
// `-g` build (GCC 12 writes DWARF 5) gets names and `file.cpp#line` too, no
// special flag needed; a module stripped of its debug sections but not of
// its symbol table gets demangled names ("ns::f(int)+1c") without lines.
// Where both know an address the two agree, except that the reader also
// qualifies out-of-line copies of inline functions ("Class::~Class" where
// the library under Wine writes "~Class") and gives a line where inlined
// code begins at a function's first byte.
//   debug_help_first  the debug-help library, then the own reader for an
//                     address it has no function (or only a public symbol)
//                     or no line for; stacks walked with the system's
//                     unwinder, the debug-help walker from the first frame
//                     the function table does not describe
//   own_reader_first  the own reader, then the debug-help library
//   debug_help_only   the debug-help library alone, for names and walks
enum class symbol_sources { debug_help_first, own_reader_first, debug_help_only };
extern QZ_API symbol_sources SymbolSources;  // debug_help_first
