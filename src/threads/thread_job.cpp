#include <qz/threads/thread_job.h>

void IThreadJob::RunOn(IThreadContext& /*worker*/) { Execute(); }

void IThreadJob::Abandon() noexcept {}
