# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# Compiler settings and the helpers that every folder's list file uses.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET default)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# As a folder of another project, that project decides.
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

# The tests are built where their packages are; asked for outright, a missing one is an error.
if(NOT DEFINED ZPK_BUILD_TESTS)
  find_package(GTest QUIET)
  pkg_check_modules(UMOCKDEV QUIET umockdev-1.0)
  set(ZPK_BUILD_TESTS_DEFAULT OFF)
  if(PROJECT_IS_TOP_LEVEL AND GTest_FOUND AND UMOCKDEV_FOUND)
    set(ZPK_BUILD_TESTS_DEFAULT ON)
  endif()
  message(STATUS "ZPK_BUILD_TESTS: ${ZPK_BUILD_TESTS_DEFAULT}, unless told")
endif()
option(ZPK_BUILD_TESTS "Build the tests" ${ZPK_BUILD_TESTS_DEFAULT})
option(ZPK_BUILD_EXAMPLES "Build the example package" ${PROJECT_IS_TOP_LEVEL})
option(ZPK_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(ZPK_BUILD_FUZZERS "Build the fuzz targets (Clang only)" OFF)
set(ZPK_SANITIZE "" CACHE STRING "Value for -fsanitize=, empty for none")
option(ZPK_COVERAGE "Record line coverage" OFF)

# Assertions are part of the behaviour, so no configuration defines NDEBUG.
set(CMAKE_CXX_FLAGS_RELEASE "-O2")
set(CMAKE_CXX_FLAGS_MINSIZEREL "-Os")
set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g")
# For the sanitizers: names and lines for their reports, and nothing of the variables, which would take a
# third of the building time.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1 -fno-omit-frame-pointer")
get_directory_property(ZPK_INHERITED_DEFINITIONS COMPILE_DEFINITIONS)
string(TOUPPER "${CMAKE_BUILD_TYPE}" ZPK_CONFIGURATION)
if("${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${ZPK_CONFIGURATION}} ${ZPK_INHERITED_DEFINITIONS}" MATCHES NDEBUG)
  add_compile_options(-UNDEBUG)
endif()

if(ZPK_SANITIZE)
  add_compile_options(-fsanitize=${ZPK_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZPK_SANITIZE})
endif()
if(ZPK_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# Assertion reports and diagnostics name sources by their path from the root.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

add_library(zpk_warnings INTERFACE)
target_compile_options(zpk_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-qual
  -Wformat=2 -Wundef -Werror)
# The annotations of Base/ZPKMutex.h, which only Clang knows.
target_compile_options(zpk_warnings INTERFACE $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)

# Every library and no program: what the Clang build compiles for its checks.
add_custom_target(zpk_libraries)

# zpk_library(name SOURCES a.cpp ... [PUBLIC lib ...] [PRIVATE lib ...])
# One static library a folder; includes are written from the root.
function(zpk_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE zpk_warnings ${ARG_PRIVATE})
  add_dependencies(zpk_libraries ${name})
endfunction()

# zpk_test(name SOURCES a.cpp ... [LINK lib ...] [LABELS label ...])
# A GoogleTest program; every test in it becomes a ctest of its own, so that
# each runs in a fresh process.
function(zpk_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  # The tests' own code runs once: to optimize it takes longer than it saves, three times as long under
  # the sanitizers, and to look for undefined behaviour in it half as long again. What is tested keeps its
  # options.
  target_compile_options(${name} PRIVATE -O0 -fno-sanitize=undefined)
  target_link_libraries(${name} PRIVATE zpk_warnings zpk_test_support ${ARG_LINK}
    GTest::gtest GTest::gmock GTest::gtest_main)
  if(ZPK_SANITIZE)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/Tests/Support/SanitizerOptions.cpp)
    target_compile_definitions(${name} PRIVATE ZPK_LEAK_SUPPRESSIONS="${PROJECT_SOURCE_DIR}/Tests/leaks.supp")
  endif()
  # For what does not come to an end: beside other work a sanitized test of five seconds may take a minute.
  set(properties TIMEOUT 600 ENVIRONMENT LC_ALL=C.UTF-8)
  if(ARG_LABELS)
    list(APPEND properties LABELS "${ARG_LABELS}")
  endif()
  gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
endfunction()
