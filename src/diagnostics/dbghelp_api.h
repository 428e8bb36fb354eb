// The functions of the system's debug-help library that the symbol engine
// calls, looked up by name when the library is loaded (private to the
// library).
#pragma once

#include <windows.h>

#include <dbghelp.h>

// The header renames StackWalk to StackWalk64; qz has a StackWalk of its own.
#undef StackWalk

struct dbghelp_api {
  // The twelve the engine needs; the library is not used without all of them.
  BOOL(WINAPI* SymInitialize)(HANDLE process, PCSTR search_path, BOOL invade_process);
  BOOL(WINAPI* SymCleanup)(HANDLE process);
  BOOL(WINAPI* SymGetLineFromAddr64)(HANDLE process, DWORD64 address, PDWORD displacement,
                                     PIMAGEHLP_LINE64 line);
  BOOL(WINAPI* SymGetModuleInfo64)(HANDLE process, DWORD64 address, PIMAGEHLP_MODULE64 info);
  FARPROC SymGetSymFromAddr64;
  DWORD(WINAPI* SymSetOptions)(DWORD options);
  FARPROC SymGetTypeInfo;
  FARPROC SymSetContext;
  FARPROC SymEnumSymbols;
  BOOL(WINAPI* SymFromAddr)(HANDLE process, DWORD64 address, PDWORD64 displacement,
                            PSYMBOL_INFO symbol);
  BOOL(WINAPI* StackWalk64)(DWORD machine, HANDLE process, HANDLE thread, LPSTACKFRAME64 frame,
                            PVOID context, PREAD_PROCESS_MEMORY_ROUTINE64 read_memory,
                            PFUNCTION_TABLE_ACCESS_ROUTINE64 function_table,
                            PGET_MODULE_BASE_ROUTINE64 module_base,
                            PTRANSLATE_ADDRESS_ROUTINE64 translate_address);
  BOOL(WINAPI* MiniDumpWriteDump)(HANDLE process, DWORD process_id, HANDLE file, MINIDUMP_TYPE type,
                                  PMINIDUMP_EXCEPTION_INFORMATION exception,
                                  PMINIDUMP_USER_STREAM_INFORMATION user_streams,
                                  PMINIDUMP_CALLBACK_INFORMATION callback);
  // Optional: makes modules loaded since the start known to the library.
  BOOL(WINAPI* SymRefreshModuleList)(HANDLE process);
  // Optional: forgets a module that was unloaded, so that a refresh can
  // register the one loaded at its base since.
  BOOL(WINAPI* SymUnloadModule64)(HANDLE process, DWORD64 base);
  // Optional: registers one module by path and range, for a module that a
  // refresh of the list did not register.
  DWORD64(WINAPI* SymLoadModuleExW)(HANDLE process, HANDLE file, PCWSTR image, PCWSTR module,
                                    DWORD64 base, DWORD size, PMODLOAD_DATA data, DWORD flags);
  // Optional: the walker's default helpers, passed explicitly where present.
  PFUNCTION_TABLE_ACCESS_ROUTINE64 SymFunctionTableAccess64;
  PGET_MODULE_BASE_ROUTINE64 SymGetModuleBase64;
};
