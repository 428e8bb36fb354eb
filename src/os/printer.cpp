#include <qz/errors/exceptions.h>
#include <qz/errors/throw.h>
#include <qz/os/printer.h>

#include "os/spooler_calls.h"

using spooler::bytes_of;
using spooler::level_of;
using spooler::two_calls;

namespace {

// The spooler's prototypes take writable names they never write.
wchar_t* writable(const wchar_t* text) { return const_cast<wchar_t*>(text); }
char* writable(const char* text) { return const_cast<char*>(text); }

BOOL open_printer(const wchar_t* name, HANDLE* h, DWORD access) {
  PRINTER_DEFAULTSW defaults = {nullptr, nullptr, access};
  return ::OpenPrinterW(writable(name), h, &defaults);
}

BOOL open_printer(const char* name, HANDLE* h, DWORD access) {
  PRINTER_DEFAULTSA defaults = {nullptr, nullptr, access};
  return ::OpenPrinterA(writable(name), h, &defaults);
}

BOOL enum_jobs(HANDLE h, DWORD first, DWORD count, DWORD level, BYTE* buffer, DWORD size,
               DWORD* needed, DWORD* returned, wchar_t) {
  return ::EnumJobsW(h, first, count, level, buffer, size, needed, returned);
}

BOOL enum_jobs(HANDLE h, DWORD first, DWORD count, DWORD level, BYTE* buffer, DWORD size,
               DWORD* needed, DWORD* returned, char) {
  return ::EnumJobsA(h, first, count, level, buffer, size, needed, returned);
}

BOOL enum_printers(DWORD flags, const wchar_t* name, DWORD level, BYTE* buffer, DWORD size,
                   DWORD* needed, DWORD* returned) {
  return ::EnumPrintersW(flags, writable(name), level, buffer, size, needed, returned);
}

BOOL enum_printers(DWORD flags, const char* name, DWORD level, BYTE* buffer, DWORD size,
                   DWORD* needed, DWORD* returned) {
  return ::EnumPrintersA(flags, writable(name), level, buffer, size, needed, returned);
}

BOOL enum_ports(const wchar_t* server, DWORD level, BYTE* buffer, DWORD size, DWORD* needed,
                DWORD* returned) {
  return ::EnumPortsW(writable(server), level, buffer, size, needed, returned);
}

BOOL enum_ports(const char* server, DWORD level, BYTE* buffer, DWORD size, DWORD* needed,
                DWORD* returned) {
  return ::EnumPortsA(writable(server), level, buffer, size, needed, returned);
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

template <class Char, class T>
DWORD enum_jobs_into(HANDLE h, AutoPtr<T>& jobs, DWORD first, DWORD count) {
  return two_calls(jobs, [=](BYTE* buffer, DWORD size, DWORD* needed, DWORD* returned) {
    return enum_jobs(h, first, count, level_of<T>, buffer, size, needed, returned, Char());
  });
}

template <class Char, class T>
DWORD enum_printers_into(AutoPtr<T>& printers, DWORD flags, const Char* name) {
  return two_calls(printers, [=](BYTE* buffer, DWORD size, DWORD* needed, DWORD* returned) {
    return enum_printers(flags, name, level_of<T>, buffer, size, needed, returned);
  });
}

template <class Char, class T>
DWORD enum_ports_into(AutoPtr<T>& ports, const Char* server) {
  return two_calls(ports, [=](BYTE* buffer, DWORD size, DWORD* needed, DWORD* returned) {
    return enum_ports(server, level_of<T>, buffer, size, needed, returned);
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

DWORD TPrinter::EnumJobsW(AutoPtr<_JOB_INFO_1W>& jobs, DWORD firstJob, DWORD count) const {
  return enum_jobs_into<wchar_t>(handle, jobs, firstJob, count);
}
DWORD TPrinter::EnumJobsW(AutoPtr<_JOB_INFO_2W>& jobs, DWORD firstJob, DWORD count) const {
  return enum_jobs_into<wchar_t>(handle, jobs, firstJob, count);
}
DWORD TPrinter::EnumJobsW(AutoPtr<_JOB_INFO_3>& jobs, DWORD firstJob, DWORD count) const {
  return enum_jobs_into<wchar_t>(handle, jobs, firstJob, count);
}
DWORD TPrinter::EnumJobsW(AutoPtr<_JOB_INFO_1A>& jobs, DWORD firstJob, DWORD count) const {
  return enum_jobs_into<char>(handle, jobs, firstJob, count);
}
DWORD TPrinter::EnumJobsW(AutoPtr<_JOB_INFO_2A>& jobs, DWORD firstJob, DWORD count) const {
  return enum_jobs_into<char>(handle, jobs, firstJob, count);
}

DWORD TPrinter::EnumPrintersW(AutoPtr<_PRINTER_INFO_1W>& printers, DWORD flags, const wchar_t* name) {
  return enum_printers_into(printers, flags, name);
}
DWORD TPrinter::EnumPrintersW(AutoPtr<_PRINTER_INFO_2W>& printers, DWORD flags, const wchar_t* name) {
  return enum_printers_into(printers, flags, name);
}
DWORD TPrinter::EnumPrintersW(AutoPtr<_PRINTER_INFO_1A>& printers, DWORD flags, const char* name) {
  return enum_printers_into(printers, flags, name);
}
DWORD TPrinter::EnumPrintersW(AutoPtr<_PRINTER_INFO_2A>& printers, DWORD flags, const char* name) {
  return enum_printers_into(printers, flags, name);
}

DWORD TPrinter::EnumPortsW(AutoPtr<_PORT_INFO_1W>& ports, const wchar_t* server) {
  return enum_ports_into(ports, server);
}
DWORD TPrinter::EnumPortsW(AutoPtr<_PORT_INFO_2W>& ports, const wchar_t* server) {
  return enum_ports_into(ports, server);
}
DWORD TPrinter::EnumPortsW(AutoPtr<_PORT_INFO_1A>& ports, const char* server) {
  return enum_ports_into(ports, server);
}
DWORD TPrinter::EnumPortsW(AutoPtr<_PORT_INFO_2A>& ports, const char* server) {
  return enum_ports_into(ports, server);
}
