# Warnings are errors everywhere; sanitizers and the lock analysis are chosen by the presets.
set(RVX_SANITIZE "" CACHE STRING "sanitizers to build with: address,undefined or thread")
option(RVX_BENCH "build the benchmarks" OFF)
option(RVX_COVERAGE "count which lines and branches run, with clang" OFF)
option(RVX_FUZZ "build the fuzzers, with clang" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
                    -Werror -fno-omit-frame-pointer)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # With optimisation, g++ 12 warns about "literal" + std::string (its bug 105651).
  add_compile_options(-Wno-restrict)
  if(RVX_SANITIZE)
    # The instrumented std::regex of g++ 12 warns of its own std::function (its bug 105562).
    add_compile_options(-Wno-maybe-uninitialized)
  endif()
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  add_compile_options(-Wthread-safety -Wthread-safety-beta)
endif()
if(RVX_SANITIZE)
  add_compile_options(-fsanitize=${RVX_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${RVX_SANITIZE})
endif()
if(RVX_FUZZ)
  # Every floor counts its branches, so that the fuzzers see what an input reaches.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(RVX_COVERAGE)
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
  add_link_options(-fprofile-instr-generate)
endif()
