# Options and compile settings that every target shares.

option(VELTRUM_BUILD_TESTS "Build the tests" ON)
option(VELTRUM_BUILD_BENCHMARKS "Build the benchmarks" OFF)
option(VELTRUM_BUILD_FUZZERS "Build the libFuzzer targets (needs clang)" OFF)
set(VELTRUM_SANITIZERS "" CACHE STRING "Sanitizers for every target, e.g. address,undefined")

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(veltrum_options INTERFACE)
target_compile_features(veltrum_options INTERFACE cxx_std_20)
target_include_directories(veltrum_options INTERFACE ${PROJECT_SOURCE_DIR})
# Contraction would let the compiler fuse a*b+c, and the bytes that we write would then depend on
# the machine that built the program.
target_compile_options(veltrum_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -ffp-contract=off)

# g++ 12 takes the concatenation of strings for overlapping copies when it inlines much.
target_compile_options(veltrum_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

if(VELTRUM_SANITIZERS)
  target_compile_options(veltrum_options INTERFACE
    -fsanitize=${VELTRUM_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # Between the checks g++ 12 loses sight of what std::regex initializes.
  target_compile_options(veltrum_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(veltrum_options INTERFACE -fsanitize=${VELTRUM_SANITIZERS})
endif()

if(VELTRUM_BUILD_FUZZERS)
  # Without the coverage of the libraries a fuzzer would search blindly.
  target_compile_options(veltrum_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Most of what a file costs to compile are the headers that it shares with its neighbours. The
# configurations that are built whole read them once for each folder.
option(VELTRUM_UNITY "Compile each folder's files as one unit" OFF)
function(veltrum_unity target)
  if(NOT VELTRUM_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  foreach(source ${ARGN})
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    string(MAKE_C_IDENTIFIER ${folder} unit)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${unit})
  endforeach()
endfunction()

# A library of every source file below the directory of its name.
function(veltrum_library name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${name}/*.cpp)
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC veltrum_options)
  veltrum_unity(${name} ${sources})
endfunction()

# A program of every source file in programs/<name>, with the libraries given.
function(veltrum_program name)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/programs/${name}/*.cpp)
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARGN} veltrum_options)
  target_compile_definitions(${name} PRIVATE VELTRUM_VERSION="${PROJECT_VERSION}")
  veltrum_unity(${name} ${sources})
  install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
