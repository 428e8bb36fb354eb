// Export control for qz.dll.
//
// Every public class, free function and tuning global of qz is declared with
// QZ_API. The library's own sources define QZ_BUILDING_DLL and export; every
// user imports.
#pragma once

#if defined(QZ_BUILDING_DLL)
#define QZ_API __declspec(dllexport)
#else
#define QZ_API __declspec(dllimport)
#endif
