# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# The libraries under the rooms, each as one target whatever it comes from. Programs that open on every
# Linux are linked with those that script/build-dependencies makes; the others take this machine's.

option(ZPK_STATIC "Link the programs of a package without a loader or any library of the target machine" OFF)

if(ZPK_STATIC AND ZPK_SANITIZE)
  message(FATAL_ERROR "Sanitizers need a loader; configure with -DZPK_STATIC=OFF")
endif()

if(ZPK_STATIC)
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/script/build-dependencies --folder
    OUTPUT_VARIABLE ZPK_DEPENDENCIES OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT IS_DIRECTORY ${ZPK_DEPENDENCIES})
    message(FATAL_ERROR
      "The libraries of the static programs are not built (${ZPK_DEPENDENCIES}). "
      "Run script/build-dependencies once, or configure with -DZPK_STATIC=OFF.")
  endif()
  # The folder's name says what is in it.
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY
    CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/script/build-dependencies)
endif()

# zpk_dependency(name FILE libx.a MODULE pkg-config-module [LINK target ...])
function(zpk_dependency name)
  cmake_parse_arguments(ARG "" "FILE;MODULE" "LINK" ${ARGN})
  add_library(${name} INTERFACE)
  if(ZPK_STATIC)
    target_include_directories(${name} SYSTEM INTERFACE ${ZPK_DEPENDENCIES}/include)
    target_link_libraries(${name} INTERFACE ${ZPK_DEPENDENCIES}/lib/${ARG_FILE} ${ARG_LINK})
  else()
    pkg_check_modules(${name} REQUIRED IMPORTED_TARGET ${ARG_MODULE})
    target_link_libraries(${name} INTERFACE PkgConfig::${name})
  endif()
endfunction()

zpk_dependency(zpk_expat FILE libexpat.a MODULE expat)
zpk_dependency(zpk_plist FILE libplist-2.0.a MODULE libplist-2.0 LINK Threads::Threads m)
zpk_dependency(zpk_isal FILE libisal.a MODULE libisal)
zpk_dependency(zpk_deflate FILE libdeflate.a MODULE libdeflate)
# Debian's package of bzip2 says nothing to pkg-config.
add_library(zpk_bzip2 INTERFACE)
if(ZPK_STATIC)
  target_include_directories(zpk_bzip2 SYSTEM INTERFACE ${ZPK_DEPENDENCIES}/include)
  target_link_libraries(zpk_bzip2 INTERFACE ${ZPK_DEPENDENCIES}/lib/libbz2.a)
else()
  find_package(BZip2 REQUIRED)
  target_link_libraries(zpk_bzip2 INTERFACE BZip2::BZip2)
endif()

# zpk_packaged_dependency(name FILE libx.a MODULE pkg-config-module [LINK target ...])
# The same for one whose package of Debian has the static library, too.
function(zpk_packaged_dependency name)
  cmake_parse_arguments(ARG "" "FILE;MODULE" "LINK" ${ARGN})
  add_library(${name} INTERFACE)
  if(ZPK_STATIC)
    find_library(${name}_archive ${ARG_FILE} REQUIRED)
    target_link_libraries(${name} INTERFACE ${${name}_archive} ${ARG_LINK})
  else()
    pkg_check_modules(${name} REQUIRED IMPORTED_TARGET ${ARG_MODULE})
    target_link_libraries(${name} INTERFACE PkgConfig::${name})
  endif()
endfunction()

zpk_dependency(zpk_zstd FILE libzstd.a MODULE libzstd LINK Threads::Threads)
# For SHA-256 alone: it has the processor's own instructions, needs nothing else, and is linked in parts.
zpk_packaged_dependency(zpk_nettle FILE libnettle.a MODULE nettle)

# zpk_static_program(name)
# The program needs nothing of the machine that it starts on but the kernel; of the libraries it holds
# what it calls.
function(zpk_static_program name)
  if(ZPK_STATIC)
    target_link_options(${name} PRIVATE -static -no-pie -s -Wl,--gc-sections -Wl,-z,relro -Wl,-z,now)
  endif()
endfunction()

# zpk_windows_part(name)
# It leaves the build machine beside carried libraries: without names for a debugger, and with what the loader
# fills in made read-only before anything of it runs. The carried loader knows the short form of the places that
# it has to fill in: that, and what nobody calls left out, saves 70 KB.
function(zpk_windows_part name)
  if(ZPK_STATIC)
    target_link_options(${name} PRIVATE -s -Wl,-z,relro -Wl,-z,now -Wl,--gc-sections -Wl,-z,pack-relative-relocs)
  endif()
endfunction()
