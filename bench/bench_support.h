// What every benchmark program shares: the clock, the best-of-rounds timer
// and the closing goal lines ("goal <name>: <ratio> x (limit <limit>) met").
#pragma once

#include <windows.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace bench {

inline double ticks_per_ns() {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(frequency.QuadPart) / 1e9;
}

inline __int64 now() {
  LARGE_INTEGER counter;
  QueryPerformanceCounter(&counter);
  return counter.QuadPart;
}

// Best ns per call of `cycle` over `rounds` rounds of `count` calls.
inline double best_ns(int rounds, int count, const std::function<void(int)>& cycle) {
  double best = 1e300;
  for (int r = 0; r < rounds; ++r) {
    const __int64 start = now();
    cycle(count);
    const double ns = static_cast<double>(now() - start) / ticks_per_ns() / count;
    if (ns < best) best = ns;
  }
  return best;
}

// The goals of one run, printed last, one line each.
class goals {
 public:
  // A cost ratio that must stay at or below `limit`.
  void within(const std::string& name, double ratio, double limit) { list_.push_back({name, ratio, limit, false}); }
  // A throughput ratio that must reach `limit`.
  void at_least(const std::string& name, double ratio, double limit) { list_.push_back({name, ratio, limit, true}); }

  void print() const {
    for (const goal& g : list_) {
      const bool met = g.at_least ? g.ratio >= g.limit : g.ratio <= g.limit;
      std::printf("goal %s: %.2f x (limit %.2f) %s\n", g.name.c_str(), g.ratio, g.limit, met ? "met" : "NOT met");
    }
  }

 private:
  struct goal {
    std::string name;
    double ratio;
    double limit;
    bool at_least;
  };
  std::vector<goal> list_;
};

}  // namespace bench
