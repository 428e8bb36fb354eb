// TPrinter: a spooler printer handle, with the printer's and its jobs'
// information, job and printer control, enumerations of printers, ports and
// jobs, and printer data read and written as _value_t.
//
//   TPrinter printer(L"Office", PRINTER_ACCESS_USE);
//   AutoPtr<_PRINTER_INFO_2W> info;
//   printer.GetPrinterInfo(info);               // level 2, from the type
//   std::wstring port = info->pPortName;
//   AutoPtr<_PORT_INFO_1W> ports;
//   for (DWORD i = 0, n = TPrinter::EnumPortsW(ports, nullptr); i < n; ++i) use(ports[i].pName);
//
// The information level of every Get, Set and Enum member is fixed by the
// structure type it takes:
//
//   GetPrinterInfo                 _PRINTER_INFO_1W 1, _2W 2, _3 3, _4W 4
//   SetPrinterInfo                 _PRINTER_INFO_2W 2, _3 3, _4W 4 (no level 1)
//   GetJobInfo, SetJobInfo,        _JOB_INFO_1W 1, _2W 2, _3 3
//     EnumJobsW
//   EnumPrintersW                  _PRINTER_INFO_1W 1, _2W 2
//   EnumPortsW                     _PORT_INFO_1W 1, _2W 2
//
// Members named after a wide system function (OpenPrinterW, EnumJobsW,
// EnumPrintersW, EnumPortsW, GetPrinterDataW, SetPrinterDataW) also take
// narrow names and the A structures and call the narrow function.
//
// Get and Enum members ask twice: first with no buffer for the size needed.
// When that first call already succeeds (an enumeration with nothing to
// list), the AutoPtr is left as it was and an enumeration returns the count
// the spooler gave, normally 0. Otherwise a buffer of the size needed is
// filled and only then exchanged into the AutoPtr, freeing its old buffer;
// enumerations return the number of entries in it.
//
// Every failure throws ESystemException with the spooler's or the thread's
// error code (a call that fails without setting one gives code 0); open
// failures add "Access" and "Name". ControlJobSilent alone answers with a
// result instead.
//
// Printer data:
//   GetPrinterDataW  a value of 0 bytes gives an empty _value_t; REG_SZ a
//                    wstring (string for the narrow name) up to its first
//                    zero; REG_DWORD an unsigned long; other types an empty
//                    value. A missing value throws with the spooler's code.
//   SetPrinterDataW  an empty value writes nothing; text kinds are written as
//                    REG_SZ with their terminating zero, int and unsigned
//                    long as REG_DWORD; every other kind (__int64, bool,
//                    double, times, objects) is silently not written.
//
// The destructor closes with ClosePrinter (its result ignored), so the
// THandle part has nothing left to close. Copies go through THandle, which
// duplicates kernel handles; a spooler handle is none, so copying a printer
// throws (or, at best, yields a handle that is not a printer): don't.
//
// Thread safety: one object belongs to one thread at a time. The static
// enumerations may run on any thread.
#pragma once

#include <qz/core/auto_ptr.h>
#include <qz/export.h>
#include <qz/os/handle.h>
#include <qz/value/value.h>

#include <windows.h>
#include <winspool.h>

class QZ_API TPrinter : public THandle {
 public:
  TPrinter(const wchar_t* name, DWORD access);
  TPrinter(const char* name, DWORD access);
  explicit TPrinter(_DoNotInitialize) noexcept {}
  TPrinter(const TPrinter&) = default;
  TPrinter& operator=(const TPrinter&) = default;
  ~TPrinter() noexcept(false);

  // OpenPrinterW with no data type, no device mode and `access` as the
  // desired access. On success a printer held so far is closed and the new
  // handle kept; on failure the object is unchanged.
  void OpenPrinterW(const wchar_t* name, DWORD access);
  void OpenPrinterW(const char* name, DWORD access);

  // SetPrinterW(handle, 0, NULL, command): PRINTER_CONTROL_PAUSE, _RESUME, ...
  void ControlPrinter(DWORD command);
  // SetJobW(handle, job, 0, NULL, command): JOB_CONTROL_PAUSE, _RESUME, ...
  void ControlJob(DWORD jobId, DWORD command);
  // The same call; false instead of an exception.
  bool ControlJobSilent(DWORD jobId, DWORD command) noexcept;

  void GetPrinterInfo(AutoPtr<_PRINTER_INFO_1W>& info) const;
  void GetPrinterInfo(AutoPtr<_PRINTER_INFO_2W>& info) const;
  void GetPrinterInfo(AutoPtr<_PRINTER_INFO_3>& info) const;
  void GetPrinterInfo(AutoPtr<_PRINTER_INFO_4W>& info) const;

  // SetPrinterW(handle, level, buffer, 0).
  void SetPrinterInfo(const AutoPtr<_PRINTER_INFO_2W>& info);
  void SetPrinterInfo(const AutoPtr<_PRINTER_INFO_3>& info);
  void SetPrinterInfo(const AutoPtr<_PRINTER_INFO_4W>& info);

  void GetJobInfo(AutoPtr<_JOB_INFO_1W>& info, DWORD jobId) const;
  void GetJobInfo(AutoPtr<_JOB_INFO_2W>& info, DWORD jobId) const;
  void GetJobInfo(AutoPtr<_JOB_INFO_3>& info, DWORD jobId) const;

  // SetJobW(handle, job, level, buffer, 0).
  void SetJobInfo(const AutoPtr<_JOB_INFO_1W>& info, DWORD jobId);
  void SetJobInfo(const AutoPtr<_JOB_INFO_2W>& info, DWORD jobId);
  void SetJobInfo(const AutoPtr<_JOB_INFO_3>& info, DWORD jobId);

  // Up to `count` jobs from position `firstJob` in the queue; returns how
  // many came.
  DWORD EnumJobsW(AutoPtr<_JOB_INFO_1W>& jobs, DWORD firstJob, DWORD count) const;
  DWORD EnumJobsW(AutoPtr<_JOB_INFO_2W>& jobs, DWORD firstJob, DWORD count) const;
  DWORD EnumJobsW(AutoPtr<_JOB_INFO_3>& jobs, DWORD firstJob, DWORD count) const;
  DWORD EnumJobsW(AutoPtr<_JOB_INFO_1A>& jobs, DWORD firstJob, DWORD count) const;
  DWORD EnumJobsW(AutoPtr<_JOB_INFO_2A>& jobs, DWORD firstJob, DWORD count) const;

  // EnumPrintersW(flags, name, level, ...): PRINTER_ENUM_LOCAL and friends.
  static DWORD EnumPrintersW(AutoPtr<_PRINTER_INFO_1W>& printers, DWORD flags, const wchar_t* name);
  static DWORD EnumPrintersW(AutoPtr<_PRINTER_INFO_2W>& printers, DWORD flags, const wchar_t* name);
  static DWORD EnumPrintersW(AutoPtr<_PRINTER_INFO_1A>& printers, DWORD flags, const char* name);
  static DWORD EnumPrintersW(AutoPtr<_PRINTER_INFO_2A>& printers, DWORD flags, const char* name);

  // The ports of `server` (null: this machine).
  static DWORD EnumPortsW(AutoPtr<_PORT_INFO_1W>& ports, const wchar_t* server);
  static DWORD EnumPortsW(AutoPtr<_PORT_INFO_2W>& ports, const wchar_t* server);
  static DWORD EnumPortsW(AutoPtr<_PORT_INFO_1A>& ports, const char* server);
  static DWORD EnumPortsW(AutoPtr<_PORT_INFO_2A>& ports, const char* server);

  _value_t GetPrinterDataW(const wchar_t* valueName);
  _value_t GetPrinterDataW(const char* valueName);
  void SetPrinterDataW(const wchar_t* valueName, const _value_t& value);
  void SetPrinterDataW(const char* valueName, const _value_t& value);
};
