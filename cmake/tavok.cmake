# The project's own build helpers: one way to make a library, one way to make a test.

add_library(tavok_options INTERFACE)
target_include_directories(tavok_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(tavok_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Werror
  # Host arithmetic stands for single architectural operations: never fuse two of them.
  -ffp-contract=off
  -fno-strict-aliasing)
if(TAVOK_SANITIZE)
  target_compile_options(tavok_options INTERFACE
    -fsanitize=${TAVOK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavok_options INTERFACE -fsanitize=${TAVOK_SANITIZE})
endif()

# tavok_library(<name> <sources>...): a static library of one folder.
function(tavok_library name)
  add_library(${name} STATIC ${ARGN})
  target_link_libraries(${name} PUBLIC tavok_options)
endfunction()

# GoogleTest comes from Debian's source package, so that one recipe serves every processor.
function(tavok_use_googletest)
  if(TARGET gtest)
    return()
  endif()
  set(source /usr/src/googletest)
  if(NOT EXISTS ${source}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest's sources are missing: install the Debian package googletest")
  endif()
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  add_subdirectory(${source} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endfunction()

# tavok_test(<name> LABEL <label> SOURCES <files> LIBRARIES <targets> [TIMEOUT <seconds>]):
# a GoogleTest program that ctest runs, under the emulator when cross-compiled.
function(tavok_test name)
  cmake_parse_arguments(arg "" "LABEL;TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
  tavok_use_googletest()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} tavok_options gtest gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS ${arg_LABEL} TIMEOUT ${arg_TIMEOUT})
endfunction()

# tavok_joined(<sources>...): what runs for each emulated instruction, and for each instruction of a
# new block, lies on both sides of the client's interface. These sources are compiled to code, and
# besides to what link-time optimisation takes: a launcher joins them, and everything else links
# their code as usual. They do without frame pointers, of which GCC sets one up on AArch64 in each
# function with a frame; debuggers have the call frame tables.
function(tavok_joined)
  if(TAVOK_AARCH64 AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    set_source_files_properties(${ARGN} PROPERTIES
      COMPILE_OPTIONS "-flto;-ffat-lto-objects;-mno-outline-atomics;-fomit-frame-pointer")
  endif()
endfunction()
