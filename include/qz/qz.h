// The whole public interface of qz, room by room, the lowest first (each
// room includes only rooms listed before it; README "Layout").
#pragma once

#include <qz/export.h>

// core: shared objects, text, and the throw helpers every room calls
#include <qz/core/auto_ptr.h>
#include <qz/core/char_class.h>
#include <qz/core/codepage.h>
#include <qz/core/com_types.h>
#include <qz/core/const_string.h>
#include <qz/core/format.h>
#include <qz/core/number_text.h>
#include <qz/core/smart_ptr.h>
#include <qz/core/split_join.h>
#include <qz/core/string_edit.h>
#include <qz/core/throw.h>
#include <qz/core/type_name.h>
#include <qz/core/user_locale.h>

// os: handles, files and processes
#include <qz/os/do_not_initialize.h>
#include <qz/os/file.h>
#include <qz/os/file_mapping.h>
#include <qz/os/handle.h>
#include <qz/os/mailslot.h>
#include <qz/os/overlapped.h>
#include <qz/os/process.h>

// time: calendar time, log stamps and stopwatches
#include <qz/time/log_stamps.h>
#include <qz/time/pcounter.h>
#include <qz/time/thread_times.h>
#include <qz/time/ticks.h>
#include <qz/time/time.h>

// sync: locks and kernel synchronisation objects
#include <qz/sync/critical_section.h>
#include <qz/sync/event.h>
#include <qz/sync/lock.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/multi_lock_with_notify.h>
#include <qz/sync/mutex.h>
#include <qz/sync/semaphore.h>
#include <qz/sync/timed_lock.h>
#include <qz/sync/tlock.h>
#include <qz/sync/waitable_timer.h>

// value: the variant value
#include <qz/value/property_list.h>
#include <qz/value/value.h>
#include <qz/value/value_kinds.h>

// errors: the exception model and the diagnostics settings
#include <qz/errors/exceptions.h>
#include <qz/errors/generic.h>
#include <qz/errors/tuning.h>

// diagnostics: symbols, stacks, snapshots, crash dumps, reference tracing
#include <qz/diagnostics/minidump.h>
#include <qz/diagnostics/smart_ptr_refs_logger.h>
#include <qz/diagnostics/symbols.h>

// faults: processor faults and throws turned into enriched exceptions
#include <qz/faults/structured_exceptions.h>

// logging: debug streams, sessions and writers
#include <qz/logging/console_writer.h>
#include <qz/logging/debug_stream.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/debug_writer.h>
#include <qz/logging/file_writer.h>
#include <qz/logging/global_streams.h>
#include <qz/logging/permanent_file_writer.h>
#include <qz/logging/stream_writer.h>

// services: COM streams and guards, impersonation, printers
#include <qz/services/com_file_stream.h>
#include <qz/services/com_initialize.h>
#include <qz/services/com_string_stream.h>
#include <qz/services/impersonation_context.h>
#include <qz/services/printer.h>

// threads: interruptible threads, the thread pool and thread tasks
#include <qz/threads/thread.h>
#include <qz/threads/thread_class.h>
#include <qz/threads/thread_context.h>
#include <qz/threads/thread_job.h>
#include <qz/threads/thread_pool.h>
#include <qz/threads/thread_task.h>
