// TDebugStream: a named log channel that fans text out to its writers.
//
//   TDebugStream trace(new TDebugWriter);
//   TDebugStreamSession(trace) << "job " << id << " done in " << ms << " ms\n";
//   trace.printf("%d of %d\n", done, total);
//
// Text goes to every writer in the order they were added (one writer may be
// in the list several times). A statement built from many << pieces goes
// through a TDebugStreamSession, which holds the stream's mutex for the whole
// statement, so that other threads' text never lands inside it. No line end
// is added anywhere: callers write their own line feeds.
//
// A stream can prefix every line with the local time (stamp_lines, for code
// deriving from the stream): the first prefix and the first after a change of
// day carry the date on a line of its own, "DD.MM.YYYY\n", then every prefix
// is "HH:MM:SS.mmm ".
//
// The 26 letter flags "A" to "Z" are a filter for callers
// (`if (Debug.GetEnabled('T')) ...`); the stream never looks at them.
//
// Writers' own failures pass out of the writing call; the lock is released on
// the way. The mutex is created by the constructor (ESystemException when the
// system refuses); copies share it through a duplicated handle, so a stream
// and its copies exclude one another.
//
// Thread safety: every member may be called on any thread at once except the
// copy assignment and the destructor. The mutex is re-entrant: a thread that
// holds it (through a session) may write and change writers freely.
#pragma once

#include <qz/core/smart_ptr.h>
#include <qz/export.h>
#include <qz/logging/debug_stream_session.h>
#include <qz/logging/stream_writer.h>
#include <qz/sync/mutex.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

class QZ_API TDebugStream {
 public:
  TDebugStream();
  explicit TDebugStream(SmartPtr<TStreamWriter> a);
  TDebugStream(SmartPtr<TStreamWriter> a, SmartPtr<TStreamWriter> b);
  TDebugStream(SmartPtr<TStreamWriter> a, SmartPtr<TStreamWriter> b, SmartPtr<TStreamWriter> c);
  // Share the writers and the mutex (a duplicated handle); copy the flags.
  TDebugStream(const TDebugStream& other);
  TDebugStream& operator=(const TDebugStream& other);
  // Closes the mutex handle (ESystemException when the system refuses).
  virtual ~TDebugStream() noexcept(false);

  // Appends `w` (no check for null or duplicates). A null writer stays in
  // the list and counts for GetEnabled, but writing passes over it.
  void AddWriter(SmartPtr<TStreamWriter> w);
  // Removes the first entry that is `w` itself. A writer that is not in the
  // list removes the LAST writer instead: remove only writers you added.
  // On a stream without writers it does nothing.
  void RemoveWriter(SmartPtr<TStreamWriter> w);
  // Leaves exactly `w` in the list.
  void ChangeWriter(SmartPtr<TStreamWriter> w);
  void ClearWriters();
  // Appends each of `other`'s writers in order; this stream is locked first.
  TDebugStream& operator+=(const TDebugStream& other);

  // `c` from "A" to "Z"; anything else throws std::out_of_range
  // "invalid bitset<N> position".
  void SetEnabled(char c, bool on);
  // False for anything but a capital letter and on a stream without writers.
  bool GetEnabled(char c) const;
  // Whether the stream has a writer.
  bool GetEnabled() const;

  // Sends `length` bytes to every writer; a null text or zero length sends
  // nothing.
  TDebugStream& WriteString(const char* text, size_t length);
  // Formats with the runtime's printf rules ("%I64d" and friends) into 4096
  // bytes. Text longer than 4095 characters is cut, and then all 4096 bytes
  // go out, the last one the terminating zero.
  TDebugStream& printf(const char* format, ...);
  // "%g" of `v`; the session continues the statement.
  TDebugStreamSession WriteDouble(double v);
  // `size` bytes as upper-case hexadecimal pairs separated by blanks
  // ("0A FF"); nothing for a size of zero or less. The session continues the
  // statement.
  TDebugStreamSession Dump(const void* data, int size);

 protected:
  std::vector<SmartPtr<TStreamWriter>> writers;
  mutable TMutex lock;
  // The next character written starts a line.
  bool at_line_start;
  // Prefix every line with the local time; kept by copies.
  bool stamp_lines;
  // Bit n is the flag of the letter 'A' + n.
  std::atomic<unsigned int> enabled;
  // Day of the month the last time prefix showed (0: none yet).
  unsigned short last_day;

 private:
  friend class TDebugStreamSession;
  class Hold;

  // Takes and drops one hold of the mutex. A thread that already holds the
  // stream counts the hold itself instead of asking the kernel again, which
  // keeps a statement at one kernel wait and release however many pieces it
  // has.
  void Enter() const;
  void Leave() const;

  void Stamp(const char* text, size_t length, std::string& stamped);
  void NoteWriterCount();
  void CopyStateOf(const TDebugStream& other);

  // The thread holding the mutex through this object (0: none), and how
  // often it does; both change only while the mutex is held.
  mutable std::atomic<unsigned long> owner;
  mutable unsigned long depth;
  // Whether `writers` is non-empty, readable without the lock.
  std::atomic<bool> has_writers;
};
