// The entry point and the assertion of every fuzz target.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Called with each input by the fuzzer, or with each file of the corpus by a test. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

// Ends the process, which makes the present input a finding, unless `holds`.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "Broken property: %s\n", property);
  std::abort();
}

inline std::string ToText(const uint8_t* data, size_t size) {
  return std::string(data, data + size);
}

}  // namespace fuzz
