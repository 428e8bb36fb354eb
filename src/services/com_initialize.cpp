#include <qz/core/com_types.h>
#include <qz/services/com_initialize.h>

// Inside the classes the unqualified names are the classes; the global
// qualified names are the system functions, which hide the classes.

CoInitialize::CoInitialize() {
  const HRESULT hr = ::CoInitialize(nullptr);
  if (FAILED(hr)) _com_issue_error(hr);
}

CoInitialize::~CoInitialize() { CoUninitialize(); }

CoInitializeEx::CoInitializeEx() {
  const HRESULT hr = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  if (FAILED(hr)) _com_issue_error(hr);
}

CoInitializeEx::~CoInitializeEx() { CoUninitialize(); }
