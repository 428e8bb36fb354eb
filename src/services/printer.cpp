#include <qz/errors/exceptions.h>
#include <qz/core/throw.h>
#include <qz/services/printer.h>

#include "services/spooler_calls.h"

using spooler::bytes_of;
using spooler::level_of;
using spooler::two_calls;
using spooler::writable;

namespace {

BOOL open_printer(const wchar_t* name, HANDLE* h, DWORD access) {
  PRINTER_DEFAULTSW defaults = {nullptr, nullptr, access};
  return ::OpenPrinterW(writable(name), h, &defaults);
}

BOOL open_printer(const char* name, HANDLE* h, DWORD access) {
  PRINTER_DEFAULTSA defaults = {nullptr, nullptr, access};
  return ::OpenPrinterA(writable(name), h, &defaults);
}

// Some spooler calls fail without setting an error: the last error is
// cleared first, so that such a failure reports 0 and not an older code.
template <class Call>
void succeed_or_throw(Call call) {
  SetLastError(ERROR_SUCCESS);
  if (!call()) ThrowSystemException();
}

template <class Char>
void open_into(void*& handle, const Char* name, DWORD access) {
  HANDLE opened = nullptr;
  SetLastError(ERROR_SUCCESS);
  if (!open_printer(name, &opened, access))
    throw ESystemException(static_cast<int>(GetLastError()), {"Access", access}, {"Name", name});
  if (THandle::IsValidHandle(handle)) ClosePrinter(handle);
  handle = opened;
}

template <class T>
void get_printer(HANDLE h, AutoPtr<T>& info) {
  two_calls(info, [h](BYTE* buffer, DWORD size, DWORD* needed, DWORD*) {
    return ::GetPrinterW(h, level_of<T>, buffer, size, needed);
  });
}

template <class T>
void get_job(HANDLE h, DWORD job, AutoPtr<T>& info) {
  two_calls(info, [h, job](BYTE* buffer, DWORD size, DWORD* needed, DWORD*) {
    return ::GetJobW(h, job, level_of<T>, buffer, size, needed);
  });
}

}  // namespace

TPrinter::TPrinter(const wchar_t* name, DWORD access) { OpenPrinterW(name, access); }

TPrinter::TPrinter(const char* name, DWORD access) { OpenPrinterW(name, access); }

// A spooler handle is not a kernel handle: it is closed here and zeroed, so
// that THandle's destructor finds nothing to close.
TPrinter::~TPrinter() noexcept(false) {
  if (IsValidHandle()) ClosePrinter(handle);
  handle = nullptr;
}

void TPrinter::OpenPrinterW(const wchar_t* name, DWORD access) { open_into(handle, name, access); }

void TPrinter::OpenPrinterW(const char* name, DWORD access) { open_into(handle, name, access); }

void TPrinter::ControlPrinter(DWORD command) {
  succeed_or_throw([&] { return ::SetPrinterW(handle, 0, nullptr, command); });
}

void TPrinter::ControlJob(DWORD jobId, DWORD command) {
  succeed_or_throw([&] { return ControlJobSilent(jobId, command); });
}

bool TPrinter::ControlJobSilent(DWORD jobId, DWORD command) noexcept {
  return ::SetJobW(handle, jobId, 0, nullptr, command) != FALSE;
}

void TPrinter::GetPrinterInfo(AutoPtr<_PRINTER_INFO_1W>& info) const { get_printer(handle, info); }
void TPrinter::GetPrinterInfo(AutoPtr<_PRINTER_INFO_2W>& info) const { get_printer(handle, info); }
void TPrinter::GetPrinterInfo(AutoPtr<_PRINTER_INFO_3>& info) const { get_printer(handle, info); }
void TPrinter::GetPrinterInfo(AutoPtr<_PRINTER_INFO_4W>& info) const { get_printer(handle, info); }

void TPrinter::SetPrinterInfo(const AutoPtr<_PRINTER_INFO_2W>& info) {
  succeed_or_throw([&] { return ::SetPrinterW(handle, 2, bytes_of(info), 0); });
}
void TPrinter::SetPrinterInfo(const AutoPtr<_PRINTER_INFO_3>& info) {
  succeed_or_throw([&] { return ::SetPrinterW(handle, 3, bytes_of(info), 0); });
}
void TPrinter::SetPrinterInfo(const AutoPtr<_PRINTER_INFO_4W>& info) {
  succeed_or_throw([&] { return ::SetPrinterW(handle, 4, bytes_of(info), 0); });
}

void TPrinter::GetJobInfo(AutoPtr<_JOB_INFO_1W>& info, DWORD jobId) const { get_job(handle, jobId, info); }
void TPrinter::GetJobInfo(AutoPtr<_JOB_INFO_2W>& info, DWORD jobId) const { get_job(handle, jobId, info); }
void TPrinter::GetJobInfo(AutoPtr<_JOB_INFO_3>& info, DWORD jobId) const { get_job(handle, jobId, info); }

void TPrinter::SetJobInfo(const AutoPtr<_JOB_INFO_1W>& info, DWORD jobId) {
  succeed_or_throw([&] { return ::SetJobW(handle, jobId, 1, bytes_of(info), 0); });
}
void TPrinter::SetJobInfo(const AutoPtr<_JOB_INFO_2W>& info, DWORD jobId) {
  succeed_or_throw([&] { return ::SetJobW(handle, jobId, 2, bytes_of(info), 0); });
}
void TPrinter::SetJobInfo(const AutoPtr<_JOB_INFO_3>& info, DWORD jobId) {
  succeed_or_throw([&] { return ::SetJobW(handle, jobId, 3, bytes_of(info), 0); });
}
