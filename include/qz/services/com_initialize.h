// CoInitialize and CoInitializeEx: COM initialisation for one scope.
//
// The guards carry the names of the system functions they call, which hide
// the class names; name the classes with the class keyword:
//
//   {
//     class CoInitialize com;     // CoInitialize(NULL): a single-threaded apartment
//     ...                         // COM calls
//   }                             // CoUninitialize
//   class CoInitializeEx mta;     // CoInitializeEx(NULL, 0): the multithreaded apartment
//
// A failing initialisation (RPC_E_CHANGED_MODE when the thread already is in
// the other kind of apartment) throws EComException with the HRESULT as its
// "Code", and then nothing is to be undone. S_FALSE (already initialised the
// same way) is success: that guard too uninitialises once, as COM counts.
//
// Thread safety: COM initialisation belongs to a thread, so a guard is made
// and ended on one thread.
#pragma once

#include <qz/export.h>

#include <windows.h>
#include <objbase.h>

class QZ_API CoInitialize {
 public:
  CoInitialize();
  ~CoInitialize();
  CoInitialize(const CoInitialize&) = delete;
  CoInitialize& operator=(const CoInitialize&) = delete;
};

class QZ_API CoInitializeEx {
 public:
  CoInitializeEx();
  ~CoInitializeEx();
  CoInitializeEx(const CoInitializeEx&) = delete;
  CoInitializeEx& operator=(const CoInitializeEx&) = delete;
};
