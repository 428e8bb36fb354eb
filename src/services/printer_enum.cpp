#include <qz/services/printer.h>

#include "services/spooler_calls.h"

using spooler::level_of;
using spooler::two_calls;
using spooler::writable;

namespace {

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
