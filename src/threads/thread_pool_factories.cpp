#include <qz/threads/thread_pool.h>

namespace {

constexpr int kDefaultPriority = 0;
constexpr int kDefaultMaxQueueLength = 1000000;

}  // namespace

SmartPtr<IThreadPool> CreateNewThreadPool() { return new TThreadPool(); }

SmartPtr<IThreadPool> CreateNewThreadPool(int max_total, int min_idle) {
  return CreateNewThreadPool(max_total, min_idle, kDefaultPriority, kDefaultMaxQueueLength);
}

SmartPtr<IThreadPool> CreateNewThreadPool(int max_total, int min_idle, int priority) {
  return CreateNewThreadPool(max_total, min_idle, priority, kDefaultMaxQueueLength);
}

SmartPtr<IThreadPool> CreateNewThreadPool(int max_total, int min_idle, int priority,
                                          int max_queue_length) {
  return new TThreadPool(static_cast<unsigned>(max_total), static_cast<unsigned>(min_idle), priority,
                         static_cast<unsigned>(max_queue_length));
}

// Made by the first caller, however many threads call at once (the
// language guarantees one initialisation), and never destroyed: its workers
// may run until the process ends, so no unload order can be trusted.
SmartPtr<IThreadPool> GetSystemThreadPool() {
  static SmartPtr<IThreadPool>* const pool = new SmartPtr<IThreadPool>(CreateNewThreadPool());
  return *pool;
}
