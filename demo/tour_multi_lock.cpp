#include "tour.h"

#include <qz/errors/generic.h>
#include <qz/sync/multi_lock.h>
#include <qz/value/property_list.h>

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace {

// Another thread of the tour: starts `body` at once; Wait() lets it finish.
class Helper {
 public:
  explicit Helper(std::function<void()> body) : body_(std::move(body)) {
    thread_ = CreateThread(nullptr, 0, &Helper::Run, this, 0, nullptr);
  }
  ~Helper() {
    Wait();
    CloseHandle(thread_);
  }
  void Wait() { WaitForSingleObject(thread_, INFINITE); }

 private:
  static DWORD WINAPI Run(void* self) {
    static_cast<Helper*>(self)->body_();
    return 0;
  }
  std::function<void()> body_;
  HANDLE thread_;
};

// Waits until `lock`'s status text mentions `text`.
void wait_for_status(const TMultiLock& lock, const std::string& text) {
  while (lock.GetStatusString().find(text) == std::string::npos) Sleep(1);
}

void readers_writer_upgrade() {
  section("Multi-lock: readers, a writer, an upgrade");
  TMultiLock lock;
  show("a new lock", lock.GetStatusString());
  lock.ReadLock();
  show("this thread reads", lock.GetStatusString());

  HANDLE reader_may_leave = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  {
    Helper reader([&] {
      lock.ReadLock();
      WaitForSingleObject(reader_may_leave, INFINITE);
      lock.Unlock();
    });
    wait_for_status(lock, ":R,");  // two holds listed
    show("a second thread reads beside it", lock.GetStatusString());
    show("WriteLock(0) beside the other reader", lock.WriteLock(0) ? "taken" : "refused");
    SetEvent(reader_may_leave);
  }
  CloseHandle(reader_may_leave);
  lock.WriteLock();
  show("the only reader left upgrades", lock.GetStatusString());
  lock.ReadLock();
  show("and reads inside its write", lock.GetStatusString());
  lock.Unlock();
  lock.Unlock();
  show("write released, its read remains", lock.GetStatusString());
  lock.Unlock();
  show("all released", lock.GetStatusString());

  {
    Helper writer([&] {
      lock.WriteLock();
      Sleep(50);
      lock.Unlock();
    });
    wait_for_status(lock, "locked_write");
    show("another thread writes; ReadLock(0) here", lock.ReadLock(0) ? "taken" : "refused");
    lock.ReadLock();  // waits for the writer
    show("ReadLock() waited for the writer", lock.GetStatusString());
    lock.Unlock();
  }
}

void upgrade_dead_lock() {
  section("Multi-lock: two readers both upgrading");
  TMultiLock lock;
  lock.ReadLock();
  Helper first([&] {
    lock.ReadLock();
    lock.WriteLock();  // waits for the other reader to leave
    lock.Unlock();
    lock.Unlock();
  });
  wait_for_status(lock, "r->w waiters");
  try {
    lock.WriteLock();
  } catch (const EGeneric& e) {
    show("the second upgrader gets", std::string(e.get_value("Text")));
    show("with the status", std::string(e.get_value("Status")));
  }
  lock.Unlock();  // lets the first upgrader in
  first.Wait();
  show("after both finished", lock.GetStatusString());

  lock.ReadLockThreadIndependent();
  show("a hold of no thread", lock.GetStatusString());
  Helper releaser([&] { lock.UnlockThreadIndependent(); });
  releaser.Wait();
  show("released by another thread", lock.GetStatusString());
}

void property_list() {
  section("Property list");
  TPropertyList settings;
  settings.PutProperty(L"Name", _value_t("qz"));
  settings.PutProperty(L"version", _value_t("0.1"));
  settings.PutProperty(L"NAME", _value_t("qz library"));  // the same property
  show("count after three puts, two names", std::to_string(settings.GetCount()));
  show("Have(\"name\")", settings.Have(L"name") ? "true" : "false");
  show("GetProperty(\"Name\")", settings.GetProperty(L"Name").as_string());
  std::vector<_bstr_t> values;
  settings.GetProperties(values);
  std::string joined;
  for (const _bstr_t& v : values) joined += (joined.empty() ? "" : ", ") + std::string(static_cast<const char*>(v));
  show("GetProperties: the values, by name", joined);
  show("GetProperty(\"missing\") is empty", settings.GetProperty(L"missing").empty() ? "yes" : "no");
}

}  // namespace

void tour_multi_lock() {
  readers_writer_upgrade();
  upgrade_dead_lock();
  property_list();
}
