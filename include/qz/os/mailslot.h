// TMailslot: the server (reading) end of a mailslot, read asynchronously
// through its TOverlapped<TFile> part. Writers open "\\.\mailslot\<name>"
// as a file and write one message per WriteFile.
//
// Mind the argument order: the constructor takes the read time-out before
// the maximum message size, CreateMailslotW takes them in the order of the
// system's function (size first). Both orders are kept for the callers
// written against them.
//
// Thread safety: as TOverlapped<TFile>.
#pragma once

#include <qz/export.h>
#include <qz/os/overlapped.h>

class QZ_API TMailslot : public TOverlapped<TFile> {
 public:
  // Creates the mailslot; throws when the system answers INVALID_HANDLE_VALUE.
  TMailslot(const char* name, DWORD readTimeout, DWORD maxMessageSize);
  TMailslot(const wchar_t* name, DWORD readTimeout, DWORD maxMessageSize);
  // Holds no mailslot.
  explicit TMailslot(_DoNotInitialize) : TOverlapped<TFile>(DoNotInitialize) {}

  // Stores the new server handle over the old one without closing it.
  void CreateMailslotW(const char* name, DWORD maxMessageSize, DWORD readTimeout);
  void CreateMailslotW(const wchar_t* name, DWORD maxMessageSize, DWORD readTimeout);
};
