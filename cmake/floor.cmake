# A folder is one floor and one target. floor_library(NAME SOURCES ... LINKS ...) makes the static
# library of a floor. Headers are included by their path from the project's root.
function(floor_library name)
  cmake_parse_arguments(FLOOR "" "" "SOURCES;LINKS" ${ARGN})
  if(FLOOR_SOURCES)
    add_library(${name} STATIC ${FLOOR_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${FLOOR_LINKS})
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} INTERFACE ${FLOOR_LINKS})
  endif()
endfunction()

# Headers of libraries that are compiled once for a whole floor: with optimisation off or on, a small file
# spends most of its time on them. floor_headers(NAME HEADERS...) gives a floor a set of its own;
# floor_headers(NAME SHARED_WITH OTHER) lets it share that of another floor with the same definitions.
# Headers of ours are not among them, since each change of one would compile the whole floor.
function(floor_headers name)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # In a precompiled header g++ 12 does not know the header of strings as the system's own, and warns of
    # "literal" + std::string in two more ways than the one that cmake/options.cmake names.
    target_compile_options(${name} PRIVATE -Wno-stringop-overflow -Wno-array-bounds)
  endif()
  cmake_parse_arguments(HEADERS "" "SHARED_WITH" "" ${ARGN})
  if(HEADERS_SHARED_WITH)
    target_precompile_headers(${name} REUSE_FROM ${HEADERS_SHARED_WITH})
  else()
    target_precompile_headers(${name} PRIVATE ${ARGN})
  endif()
endfunction()

# floor_test(NAME SOURCES ... LINKS ...) makes one test program and hands its cases to CTest. With a
# sanitizer, where a process takes longer to start than most cases to run, it hands over the program as a
# whole; OWN_PROCESSES says that each case needs a process.
function(floor_test name)
  cmake_parse_arguments(TEST "OWN_PROCESSES" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${TEST_LINKS} GTest::gmock_main)
  if(RVX_SANITIZE AND NOT TEST_OWN_PROCESSES)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES TIMEOUT 900)
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# floor_gui_test(NAME SOURCES ... LINKS ...): the same for a program whose tests open windows, drawn
# into memory. Not under the thread sanitizer, which does not know the toolkit's own locking.
function(floor_gui_test name)
  if(RVX_SANITIZE MATCHES "thread")
    return()
  endif()
  cmake_parse_arguments(TEST "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${TEST_LINKS} rvx_gui_test_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/gui_leaks.txt")
endfunction()

# Lets a floor include <ui_NAME.h> for the forms of module/resources/forms.
function(floor_forms name)
  set_target_properties(${name} PROPERTIES
    AUTOUIC ON AUTOUIC_SEARCH_PATHS ${CMAKE_SOURCE_DIR}/module/resources/forms)
endfunction()
