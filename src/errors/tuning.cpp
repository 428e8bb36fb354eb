// Defaults of the process-wide switches callers may change at start-up.
#include <qz/errors/tuning.h>

bool UseVEH = true;
std::string SkipModulesForError = "kernel32;ntdll;nt;qz;MSVCR90D;MSVCR90;MSVCP90D;MSVCP90;KERNELBASE";
bool SaveMiniDumpOnCppException = false;
bool SaveMiniDumpOnStructuredException = true;
bool ExtendDebugInformationFromException = false;
unsigned long MiniDumpType = 0;
const char* MiniDumpFileFormat = "Dumps\\%s_%s_%04hd_%02hd_%02hd_%02hd_%02hd_%02hd_%03hd.dmp";
std::string MiniDumpExcludedTypes = "EThreadInterrupt;EStructuredException;C++";
symbol_sources SymbolSources = symbol_sources::debug_help_first;
