#include <qz/core/smart_ptr.h>

#include <qz/core/number_text.h>
#include <qz/core/type_name.h>

#include <windows.h>

#include <cstdint>

SmartPtrObj::~SmartPtrObj() = default;

std::string SmartPtrObj::ToString() const {
  // Only the low 32 bits of the address are shown, as a signed int in radix
  // 16: objects whose addresses differ only above bit 31 print alike.
  // The most-derived object's address: under virtual inheritance the
  // SmartPtrObj part sits elsewhere inside the object.
  const void* object = dynamic_cast<const void*>(this);
  const auto low = static_cast<int>(reinterpret_cast<std::uintptr_t>(object));
  return type_name(typeid(*this)) + " {0x" + itoa(low, 16) + "}";
}

long SmartPtrObj::AddRef() const noexcept { return InterlockedIncrement(&ref_count_); }

long SmartPtrObj::Release() const noexcept {
  const long left = InterlockedDecrement(&ref_count_);
  if (left == 0) delete this;
  return left;
}

long SmartPtrObj::ReleaseWithoutDelete() const noexcept { return InterlockedDecrement(&ref_count_); }
