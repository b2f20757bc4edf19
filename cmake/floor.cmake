# A folder is one floor and one target. floor_library(NAME SOURCES ... LINKS ...) makes the static
# library of a floor; headers are included by their path from the project's root.
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

# floor_test(NAME SOURCES ... LINKS ...) makes one test program and hands its cases to CTest.
function(floor_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${TEST_LINKS} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300)
endfunction()
