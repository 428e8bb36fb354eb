// A module of its own for the symbol tests: a test loads it, unloads it and
// loads a copy under another name, which lands at the same address.
extern "C" __declspec(dllexport) int qz_probe_function(int x);

int qz_probe_function(int x) { return x * 3 + 1; }
