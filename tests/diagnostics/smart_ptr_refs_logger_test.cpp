#include <qz/diagnostics/smart_ptr_refs_logger.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

// Stands for a smart pointer's two helpers: the logger leaves out its own
// frame and these two, so a reference is charged to the code that took it.
__attribute__((noinline)) void logger_caller(const SmartPtrRefsLogger& refs, const void* key) {
  refs.AddPointerRef(key);
  GetTickCount();  // no tail call
}
__attribute__((noinline)) void smart_pointer_helper(const SmartPtrRefsLogger& refs, const void* key) {
  logger_caller(refs, key);
  GetTickCount();
}

__attribute__((noinline)) void holder_a(const SmartPtrRefsLogger& refs, const void* key) {
  smart_pointer_helper(refs, key);
  GetTickCount();
}
__attribute__((noinline)) void holder_b(const SmartPtrRefsLogger& refs, const void* key) {
  smart_pointer_helper(refs, key);
  GetCurrentThreadId();  // not the same code as holder_a, or the two are folded into one
}

std::size_t count_of(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

const std::string kSeparator(76, '-');

TEST(SmartPtrRefsLogger, ReportsReferencesGroupedByTheCodeThatTookThemOnceEnabled) {
  SmartPtrRefsLogger refs;
  int objects[5] = {};
  EXPECT_EQ(refs.AddPointerRef(&objects[0]), 0);  // disabled: nothing is recorded
  EXPECT_EQ(refs.DelPointerRef(&objects[0]), 0);
  EXPECT_EQ(refs.GetObjectReferences(nullptr), "");
  ASSERT_TRUE(refs.EnableSmartPtrRefsLogger());
  ASSERT_TRUE(refs.EnableSmartPtrRefsLogger());  // once enabled, stays so
  // Loops that are not unrolled: one call site per holder.
  for (volatile int i = 0; i < 3; i = i + 1) holder_a(refs, &objects[i]);
  for (volatile int i = 3; i < 5; i = i + 1) holder_b(refs, &objects[i]);
  EXPECT_EQ(refs.AddPointerRef(&objects[0]), 5);  // a known key keeps its first stack
  EXPECT_EQ(refs.DelPointerRef(&refs), 5);        // an unknown key changes nothing

  const std::string report = refs.GetObjectReferences(nullptr);
  const std::string fewer = kSeparator + "\nReferences: 2\nStack: \n-> holder_b+";
  const std::string more = kSeparator + "\nReferences: 3\nStack: \n-> holder_a+";
  ASSERT_EQ(report.find(fewer), 0u) << report;
  EXPECT_NE(report.find(more), std::string::npos) << report;
  EXPECT_EQ(count_of(report, "\n-> "), 2 * SmartPtrRefsLogger::MaxStackDepth);
  EXPECT_EQ(report.back(), '\n');

  // The key asked about is left out.
  const std::string without_first = refs.GetObjectReferences(&objects[0]);
  EXPECT_EQ(count_of(without_first, "References: 2\n"), 2u) << without_first;

  const SmartPtrRefsLogger copy(refs);
  EXPECT_EQ(refs.DelPointerRef(&objects[3]), 4);
  EXPECT_EQ(copy.GetObjectReferences(nullptr), report);
}

// A thread whose body calls the logger itself: after the three frames left
// out, only the system's thread start remains, a stack of one frame.
DWORD WINAPI take_reference_at_thread_start(void* refs) {
  static_cast<SmartPtrRefsLogger*>(refs)->AddPointerRef(refs);
  return GetTickCount() & 0;
}

TEST(SmartPtrRefsLogger, AOneFrameStackIsReportedOnOneLine) {
  SmartPtrRefsLogger refs;
  ASSERT_TRUE(refs.EnableSmartPtrRefsLogger());
  HANDLE thread = CreateThread(nullptr, 0, &take_reference_at_thread_start, &refs, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  ASSERT_EQ(WaitForSingleObject(thread, 30000), WAIT_OBJECT_0);
  CloseHandle(thread);
  const std::string report = refs.GetObjectReferences(nullptr);
  EXPECT_EQ(report.rfind("Refs: 1, Stack: \n-> ", 0), 0u) << report;
  EXPECT_EQ(count_of(report, "\n"), 2u) << report;
}

}  // namespace
