#include <qz/core/smart_ptr.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <new>
#include <thread>
#include <vector>

// At namespace scope so that its run-time type name is plain.
class SmartPtrProbe : public virtual SmartPtrObj {
 public:
  explicit SmartPtrProbe(bool* destroyed = nullptr) : destroyed_(destroyed) {}
  ~SmartPtrProbe() override {
    if (destroyed_) *destroyed_ = true;
  }

 private:
  bool* destroyed_;
};

namespace {

// ToString shows the address of the whole object, not of its SmartPtrObj part.
std::string expected_text(const void* address) {
  char hex[16];
  std::snprintf(hex, sizeof hex, "%x", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(address)));
  return std::string("SmartPtrProbe {0x") + hex + "}";
}

}  // namespace

TEST(SmartPtr, CountStartsAtZeroIsSharedByConstAndBasePointersAndTheLastReleaseDeletes) {
  bool destroyed = false;
  auto* object = new SmartPtrProbe(&destroyed);
  EXPECT_EQ(object->ref_count(), 0);
  SmartPtr<SmartPtrProbe> writable(object);
  SmartPtr<const SmartPtrProbe> readable = writable;
  SmartPtr<const SmartPtrObj> base = readable;
  EXPECT_EQ(base->ref_count(), 3);
  writable.reset();
  readable.reset();
  EXPECT_FALSE(destroyed);
  const auto& same = base;
  base = same;  // self-assignment keeps the object
  base = base.get();
  EXPECT_EQ(base->ref_count(), 1);
  base = new SmartPtrProbe;  // reassignment releases it
  EXPECT_TRUE(destroyed);
}

TEST(SmartPtr, ConcurrentCopiesKeepTheCountExact) {
  bool destroyed = false;
  const SmartPtr<SmartPtrProbe> shared(new SmartPtrProbe(&destroyed));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&shared] {
      for (int i = 0; i < 50000; ++i) SmartPtr<const SmartPtrObj> copy = SmartPtr<SmartPtrProbe>(shared);
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(shared->ref_count(), 1);
  EXPECT_FALSE(destroyed);
}

TEST(SmartPtrObj, ToStringShowsTypeAndTheLow32BitsOfTheAddress) {
  SmartPtrProbe probe;
  EXPECT_EQ(probe.ToString(), expected_text(&probe));
  void* const wanted = reinterpret_cast<void*>(std::uintptr_t{0x180000000});
  void* memory = VirtualAlloc(wanted, 0x10000, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (memory != wanted) {
    if (memory) VirtualFree(memory, 0, MEM_RELEASE);
    GTEST_SKIP() << "address 0x180000000 is not free";
  }
  auto* high = new (static_cast<char*>(memory) + 0x40) SmartPtrProbe;
  const std::string text = high->ToString();
  high->~SmartPtrProbe();
  VirtualFree(memory, 0, MEM_RELEASE);
  EXPECT_EQ(text, expected_text(high));
  EXPECT_EQ(text.substr(0, 19), "SmartPtrProbe {0x80");
}
