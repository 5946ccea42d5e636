# Program tests: ordinary programs, built with SVE and without, run under tavok and directly.

# Processors without SVE: the first has no half precision and no large-system atomics, the second
# has both. On an AArch64 machine the programs run on that machine.
if(CMAKE_CROSSCOMPILING)
  set(TAVOK_PROGRAM_CPUS cortex-a72 neoverse-n1
    CACHE STRING "qemu-user's processor models for the tests of programs")
else()
  set(TAVOK_PROGRAM_CPUS host)
endif()

# The words that run an AArch64 program on one of TAVOK_PROGRAM_CPUS. With its own allocator GLib
# leaves a lock taken in the child of a fork, where another thread of the simulator held it, and the
# child hangs at its next new code; malloc has no such flaw.
function(tavok_host_words cpu result)
  if(cpu STREQUAL host)
    set(${result} "" PARENT_SCOPE)
  else()
    set(${result} env G_SLICE=always-malloc qemu-aarch64 -cpu ${cpu} -L /usr/aarch64-linux-gnu PARENT_SCOPE)
  endif()
endfunction()

# tavok_program_executable(<name> static|static-pie|dynamic SOURCES <files> [FLAGS <flags>]):
# a program for the tests of this folder.
function(tavok_program_executable name linkage)
  cmake_parse_arguments(arg "" "" "SOURCES;FLAGS" ${ARGN})
  add_executable(${name} EXCLUDE_FROM_ALL ${arg_SOURCES})
  target_compile_options(${name} PRIVATE ${arg_FLAGS})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/programs)
  target_link_libraries(${name} PRIVATE m pthread)
  if(NOT linkage STREQUAL dynamic)
    target_link_options(${name} PRIVATE -${linkage})
  endif()
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin/programs)
  add_dependencies(programs ${name})
endfunction()

# A test that ctest runs: a script of tests/program with the launcher, its own arguments, and behind
# `--` the words that run an AArch64 program on this processor.
function(tavok_script_test name cpu script)
  tavok_host_words(${cpu} words)
  add_test(NAME ${name}
    COMMAND ${PROJECT_SOURCE_DIR}/tests/program/${script} $<TARGET_FILE:tavok> ${ARGN} -- ${words})
  set_tests_properties(${name} PROPERTIES LABELS program TIMEOUT 300)
endfunction()

# Half of the runs are with inserted code as it was inserted and without predictions, whatever
# TAVOK_OPTIONS asks for in all runs: statically linked programs on the second processor, and
# dynamically linked ones on the first.
function(tavok_half_optimised name linkage cpu)
  list(GET TAVOK_PROGRAM_CPUS 0 first)
  set(on_first FALSE)
  if(cpu STREQUAL first)
    set(on_first TRUE)
  endif()
  set(dynamic FALSE)
  if(linkage STREQUAL dynamic)
    set(dynamic TRUE)
  endif()
  if(on_first STREQUAL dynamic)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT_MODIFICATION
      "TAVOK_OPTIONS=string_append: --no-optimise --no-predict")
  endif()
endfunction()

# tavok_program_test(<name> SOURCES <files> [STATIC | DYNAMIC] [CPUS <models>]
#                    [FLAGS <both builds>] [SVE_FLAGS <the SVE build>] [LINK_FLAGS <both builds>]):
# builds the program with SVE and without, and compares the plain build run directly with the SVE
# build run under tavok: output, exit status, and the report. Without STATIC or DYNAMIC, both
# linkages are built; without CPUS, it runs on all of TAVOK_PROGRAM_CPUS, optimised by halves.
function(tavok_program_test name)
  cmake_parse_arguments(arg "STATIC;DYNAMIC" "" "SOURCES;CPUS;FLAGS;SVE_FLAGS;LINK_FLAGS" ${ARGN})
  set(linkages static dynamic)
  if(arg_STATIC)
    set(linkages static)
  elseif(arg_DYNAMIC)
    set(linkages dynamic)
  endif()
  if(NOT arg_CPUS OR NOT CMAKE_CROSSCOMPILING)
    set(arg_CPUS ${TAVOK_PROGRAM_CPUS})
  endif()
  list(TRANSFORM arg_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/tests/programs/)
  # Wrapping arithmetic is what the kernels are about; fused operations would differ by build.
  set(common -Wall -Wextra -Wshadow -Werror -fwrapv -ffp-contract=off ${arg_FLAGS})

  foreach(build plain sve)
    set(flags ${common} -O2 -fno-tree-vectorize -march=armv8-a)
    if(build STREQUAL sve)
      # The compiler shall take SVE, and not the 128-bit vectors of the base architecture.
      set(flags ${common} -O3 --param=aarch64-autovec-preference=2 -march=armv8-a+sve
        ${arg_SVE_FLAGS})
    endif()
    add_library(${name}_${build} OBJECT EXCLUDE_FROM_ALL ${arg_SOURCES})
    target_compile_options(${name}_${build} PRIVATE ${flags})
    target_include_directories(${name}_${build} PRIVATE ${PROJECT_SOURCE_DIR}/tests/programs)
    foreach(linkage ${linkages})
      tavok_program_executable(${name}_${build}_${linkage} ${linkage}
        SOURCES $<TARGET_OBJECTS:${name}_${build}>)
      target_link_options(${name}_${build}_${linkage} PRIVATE ${arg_LINK_FLAGS})
    endforeach()
  endforeach()

  foreach(linkage ${linkages})
    foreach(cpu ${arg_CPUS})
      tavok_script_test(program_${name}_${linkage}_${cpu} ${cpu} compare_builds
        $<TARGET_FILE:${name}_plain_${linkage}> $<TARGET_FILE:${name}_sve_${linkage}>)
      tavok_half_optimised(program_${name}_${linkage}_${cpu} ${linkage} ${cpu})
    endforeach()
  endforeach()
endfunction()
