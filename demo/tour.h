// The demo's shared helpers: each tour_*.cpp shows one subsystem.
#pragma once

#include <cstdio>
#include <string>

inline void section(const char* title) { std::printf("\n== %s ==\n", title); }
inline void show(const char* what, const std::string& result) { std::printf("  %-44s %s\n", what, result.c_str()); }

void tour_core();
void tour_value();
void tour_errors();
void tour_time();
void tour_conversions();
void tour_os();
void tour_logging();
void tour_multi_lock();
void tour_com();
void tour_symbols();
void tour_diagnostics();
void tour_threads();
