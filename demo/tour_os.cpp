#include "tour.h"

#include <qz/errors/exceptions.h>
#include <qz/os/file.h>
#include <qz/sync/critical_section.h>
#include <qz/sync/event.h>
#include <qz/sync/semaphore.h>
#include <qz/sync/timed_lock.h>
#include <qz/sync/tlock.h>

#include <string>

namespace {

std::wstring temp_file_name() {
  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  return std::wstring(folder) + L"qz-tour.txt";
}

void file_round_trip() {
  section("Files: owning handles, errors as exceptions");
  const std::wstring name = temp_file_name();
  {
    TFile file(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS);
    file.WriteFile("written by qz", 13);
    file.SetFilePointerEx(0, FILE_BEGIN);
    char text[32] = {};
    const DWORD read = file.ReadFile(text, sizeof text - 1);
    show("read back", std::string(text, read));
    show("file size", std::to_string(file.GetFileSize()));
  }  // closed here
  DeleteFileW(name.c_str());
  try {
    TFile missing(name.c_str(), GENERIC_READ, 0, OPEN_EXISTING);
  } catch (const ESystemException& e) {
    show("opening it again after deleting", "Code " + std::to_string(static_cast<int>(e.get_value("Code"))));
  }
}

void event_and_semaphore() {
  section("Kernel objects: events and semaphores");
  TEvent ready;
  show("event before Set()", ready.Signaled(0) ? "signalled" : "not signalled");
  ready.Set();
  show("event after Set()", ready.Signaled(0) ? "signalled" : "not signalled");

  TSemaphore slots(2, 2);  // maximum 2, both free
  const bool first = slots.Lock(0), second = slots.Lock(0), third = slots.Lock(0);
  show("three Lock(0) on two slots", std::string(first ? "yes " : "no ") + (second ? "yes " : "no ") +
                                        (third ? "yes" : "no"));
  show("ReleaseSemaphore(2) returns the count before", std::to_string(slots.ReleaseSemaphore(2)));
}

void timed_lock_share() {
  section("A timed lock measures how busy a lock is");
  TCriticalSection section_lock;
  TTimedLock measured(section_lock);
  for (int i = 0; i < 5; ++i) {
    {
      TLock hold(measured);
      Sleep(6);  // held
    }
    Sleep(2);  // free
  }
  char share[32];
  std::snprintf(share, sizeof share, "%.0f %%", measured.get_busy() * 100.0);
  show("busy share (about 75 % expected)", share);
  std::snprintf(share, sizeof share, "%.3f s", measured.get_elapsed());
  show("measured for", share);
}

}  // namespace

void tour_os() {
  file_round_trip();
  event_and_semaphore();
  timed_lock_share();
}
