#include "diagnostics/debug_info/debug_info_cache.h"

#include "diagnostics/debug_info/module_debug_info.h"
#include "sync/slim_lock_holds.h"

#include <windows.h>

#include <memory>
#include <vector>

namespace debug_info {

namespace {

struct module_key {
  std::uint64_t base = 0;
  std::uint32_t size = 0;
  std::uint32_t time_stamp = 0;
  std::wstring path;

  bool operator==(const module_key& other) const {
    return base == other.base && size == other.size && time_stamp == other.time_stamp &&
           path == other.path;
  }
};

struct cached_module {
  module_key key;
  std::unique_ptr<module_debug_info> info;  // null: the file cannot be read
  std::uint64_t last_use = 0;
};

struct cache {
  SRWLOCK lock = SRWLOCK_INIT;
  std::vector<cached_module> modules;
  std::uint64_t clock = 0;
};

cache& the_cache() {
  static cache* instance = new cache;  // never destroyed: used until the process ends
  return *instance;
}

// Holds the module that contains an address loaded for one scope.
class pinned_module {
 public:
  explicit pinned_module(std::uint64_t address) {
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(static_cast<std::uintptr_t>(address)),
                            &module_))
      module_ = nullptr;
  }
  ~pinned_module() {
    if (module_) FreeLibrary(module_);
  }
  pinned_module(const pinned_module&) = delete;
  pinned_module& operator=(const pinned_module&) = delete;

  // The key of the module as loaded; false when there is none.
  bool key(module_key& key) const {
    if (!module_) return false;
    const auto* base = reinterpret_cast<const std::uint8_t*>(module_);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    key.base = reinterpret_cast<std::uintptr_t>(base);
    key.size = nt->OptionalHeader.SizeOfImage;
    key.time_stamp = nt->FileHeader.TimeDateStamp;
    std::vector<wchar_t> path(MAX_PATH);
    for (;;) {
      const DWORD length = GetModuleFileNameW(module_, path.data(), static_cast<DWORD>(path.size()));
      if (length == 0) return false;
      if (length < path.size()) {
        key.path.assign(path.data(), length);
        return true;
      }
      path.resize(path.size() * 2);
    }
  }

 private:
  HMODULE module_ = nullptr;
};

std::unique_ptr<module_debug_info> open_module(const module_key& key) {
  try {
    auto info = std::make_unique<module_debug_info>(key.path, kModuleBudget);
    if (info->file().time_stamp() != key.time_stamp ||
        info->file().size_of_image() != key.size)
      return nullptr;  // the file was replaced since the module was loaded
    return info;
  } catch (const bad_debug_info&) {
    return nullptr;
  }
}

// The cached module for `key`, read on first use; under the lock.
module_debug_info* module_for(cache& c, const module_key& key) {
  for (cached_module& m : c.modules) {
    if (m.key == key) {
      m.last_use = ++c.clock;
      return m.info.get();
    }
  }
  if (c.modules.size() >= kCachedModules) {
    auto oldest = c.modules.begin();
    for (auto m = c.modules.begin(); m != c.modules.end(); ++m)
      if (m->last_use < oldest->last_use) oldest = m;
    c.modules.erase(oldest);
  }
  c.modules.push_back({key, open_module(key), ++c.clock});
  return c.modules.back().info.get();
}

// Runs `look_up(module, rva)` for the module holding `address`.
template <typename LookUp>
bool with_module(std::uint64_t address, LookUp look_up) {
  pinned_module pinned(address);
  module_key key;
  if (!pinned.key(key)) return false;
  cache& c = the_cache();
  slim_exclusive_hold hold(c.lock);
  module_debug_info* info = module_for(c, key);
  try {
    return info && look_up(*info, address - key.base);
  } catch (const bad_debug_info&) {
    return false;
  }
}

}  // namespace

bool function_name(std::uint64_t address, std::string& name, std::uint64_t& displacement) {
  return with_module(address, [&](module_debug_info& info, std::uint64_t rva) {
    return info.function_at(rva, name, displacement);
  });
}

bool source_line(std::uint64_t address, std::string& file, unsigned int& line) {
  return with_module(address, [&](module_debug_info& info, std::uint64_t rva) {
    return info.line_at(rva, file, line);
  });
}

cache_figures cache_state() {
  cache& c = the_cache();
  slim_exclusive_hold hold(c.lock);
  cache_figures figures;
  for (const cached_module& m : c.modules) {
    ++figures.modules;
    if (!m.info) continue;
    figures.bytes += m.info->bytes();
    figures.mapped += m.info->file().mapped_bytes();
  }
  return figures;
}

void clear_cache() {
  cache& c = the_cache();
  slim_exclusive_hold hold(c.lock);
  c.modules.clear();
}

}  // namespace debug_info
