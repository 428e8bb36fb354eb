// Construction, copies, the writer list, the letter flags and the hold count.
#include <qz/logging/debug_stream.h>

#include "logging/debug_stream_hold.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>

TDebugStream::TDebugStream()
    : at_line_start(true), stamp_lines(false), enabled(0), last_day(0), owner(0), depth(0), has_writers(false) {}

TDebugStream::TDebugStream(SmartPtr<TStreamWriter> a) : TDebugStream() { AddWriter(a); }

TDebugStream::TDebugStream(SmartPtr<TStreamWriter> a, SmartPtr<TStreamWriter> b) : TDebugStream() {
  AddWriter(a);
  AddWriter(b);
}

TDebugStream::TDebugStream(SmartPtr<TStreamWriter> a, SmartPtr<TStreamWriter> b, SmartPtr<TStreamWriter> c)
    : TDebugStream() {
  AddWriter(a);
  AddWriter(b);
  AddWriter(c);
}

// The copy's hold count starts empty even when this thread holds `other`:
// the kernel mutex they share counts that hold already.
TDebugStream::TDebugStream(const TDebugStream& other)
    : lock(other.lock),
      at_line_start(true),
      stamp_lines(false),
      enabled(0),
      last_day(0),
      owner(0),
      depth(0),
      has_writers(false) {
  CopyStateOf(other);
  NoteWriterCount();
}

// Writers, flags and stamping state, read under the source's lock.
void TDebugStream::CopyStateOf(const TDebugStream& other) {
  Hold hold(other);
  writers = other.writers;
  at_line_start = other.at_line_start;
  stamp_lines = other.stamp_lines;
  enabled = other.enabled.load();
  last_day = other.last_day;
}

TDebugStream& TDebugStream::operator=(const TDebugStream& other) {
  if (this == &other) return *this;
  CopyStateOf(other);
  lock = other.lock;
  owner = 0;
  depth = 0;
  NoteWriterCount();
  return *this;
}

TDebugStream::~TDebugStream() noexcept(false) = default;

void TDebugStream::Enter() const {
  const unsigned long me = GetCurrentThreadId();
  if (owner.load(std::memory_order_relaxed) == me) {
    ++depth;
    return;
  }
  lock.Lock();
  owner.store(me, std::memory_order_relaxed);
  depth = 1;
}

void TDebugStream::Leave() const {
  if (--depth != 0) return;
  owner.store(0, std::memory_order_relaxed);
  lock.Unlock();
}

void TDebugStream::NoteWriterCount() { has_writers.store(!writers.empty(), std::memory_order_relaxed); }

void TDebugStream::AddWriter(SmartPtr<TStreamWriter> w) {
  Hold hold(*this);
  writers.push_back(w);
  NoteWriterCount();
}

// An absent writer is "found" at the end, and the end's neighbour goes: the
// established behaviour, which callers that remove only what they added
// never see.
void TDebugStream::RemoveWriter(SmartPtr<TStreamWriter> w) {
  Hold hold(*this);
  if (writers.empty()) return;
  auto found = std::find_if(writers.begin(), writers.end(),
                            [&w](const SmartPtr<TStreamWriter>& entry) { return entry.get() == w.get(); });
  if (found == writers.end()) --found;
  writers.erase(found);
  NoteWriterCount();
}

void TDebugStream::ChangeWriter(SmartPtr<TStreamWriter> w) {
  ClearWriters();
  AddWriter(w);
}

void TDebugStream::ClearWriters() {
  Hold hold(*this);
  writers.clear();
  NoteWriterCount();
}

// The list is copied first so that a stream added to itself doubles its
// writers instead of chasing its own growing end.
TDebugStream& TDebugStream::operator+=(const TDebugStream& other) {
  Hold mine(*this);
  Hold theirs(other);
  const std::vector<SmartPtr<TStreamWriter>> added = other.writers;
  for (const auto& w : added) AddWriter(w);
  return *this;
}

void TDebugStream::SetEnabled(char c, bool on) {
  if (c < 'A' || c > 'Z') throw std::out_of_range("invalid bitset<N> position");
  const unsigned int bit = 1u << (c - 'A');
  if (on)
    enabled.fetch_or(bit, std::memory_order_relaxed);
  else
    enabled.fetch_and(~bit, std::memory_order_relaxed);
}

// Read without the lock: a filter checked before every statement must not
// cost a kernel call. A racing writer change is seen before or after.
bool TDebugStream::GetEnabled(char c) const {
  if (c < 'A' || c > 'Z' || !GetEnabled()) return false;
  return (enabled.load(std::memory_order_relaxed) >> (c - 'A')) & 1u;
}

bool TDebugStream::GetEnabled() const { return has_writers.load(std::memory_order_relaxed); }
