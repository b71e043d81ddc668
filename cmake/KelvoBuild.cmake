# Compiler settings that hold everywhere, and the three functions that declare a target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

option(KELVO_BENCHMARKS "Build the benchmarks" OFF)
option(KELVO_WERROR "Treat warnings as errors" OFF)
set(KELVO_SANITIZERS "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(KELVO_COVERAGE "Instrument for gcov" OFF)

find_program(KELVO_CCACHE ccache)
if(KELVO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${KELVO_CCACHE}")
endif()

add_library(kelvo_options INTERFACE)
target_compile_options(kelvo_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # The transform codecs promise the same bits on every machine.
    -ffp-contract=off)
if(KELVO_WERROR)
    target_compile_options(kelvo_options INTERFACE -Werror)
endif()
if(KELVO_SANITIZERS)
    # The compiler's flow analysis misreads instrumented code and warns of what is initialised.
    target_compile_options(kelvo_options INTERFACE
        -fsanitize=${KELVO_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all
        -Wno-maybe-uninitialized)
    target_link_options(kelvo_options INTERFACE -fsanitize=${KELVO_SANITIZERS})
endif()
if(KELVO_COVERAGE)
    target_compile_options(kelvo_options INTERFACE --coverage)
    target_link_options(kelvo_options INTERFACE --coverage)
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# Gives a target an include root that holds nothing but a link to its own folder: a header of
# another folder is found only through USES, so an arrow that is not declared does not compile.
function(kelvo_include_root target)
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    set(root "${PROJECT_BINARY_DIR}/roots/${target}")
    get_filename_component(parent "${root}/${folder}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
    file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}" "${root}/${folder}" SYMBOLIC)
    target_include_directories(${target} PUBLIC "${root}")
endfunction()

# kelvo_library(name SOURCES file... [USES target...] [LINKS library...])
#   USES   our own targets, visible to whoever uses this one
#   LINKS  foreign libraries, invisible to whoever uses this one
function(kelvo_library target)
    cmake_parse_arguments(arg "" "" "SOURCES;USES;LINKS" ${ARGN})
    add_library(${target} STATIC ${arg_SOURCES})
    kelvo_include_root(${target})
    target_link_libraries(${target} PUBLIC ${arg_USES} PRIVATE kelvo_options ${arg_LINKS})
    target_link_libraries(${target} INTERFACE $<BUILD_INTERFACE:Threads::Threads>)
endfunction()

# kelvo_executable(name SOURCES file... [USES target...] [LINKS library...])
function(kelvo_executable target)
    cmake_parse_arguments(arg "" "" "SOURCES;USES;LINKS" ${ARGN})
    add_executable(${target} ${arg_SOURCES})
    kelvo_include_root(${target})
    target_link_libraries(${target} PRIVATE kelvo_options Threads::Threads ${arg_USES} ${arg_LINKS})
endfunction()

# kelvo_test(name SOURCES file... [USES target...] [LINKS library...] [TIMEOUT seconds])
#   One executable of GoogleTest cases, run by ctest as one test.
function(kelvo_test target)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;USES;LINKS" ${ARGN})
    find_package(GTest REQUIRED)
    add_executable(${target} ${arg_SOURCES})
    kelvo_include_root(${target})
    target_link_libraries(${target} PRIVATE
        kelvo_options Threads::Threads ${arg_USES} ${arg_LINKS} GTest::gmock GTest::gtest GTest::gtest_main)
    target_compile_definitions(${target} PRIVATE
        KELVO_SOURCE_DIR="${PROJECT_SOURCE_DIR}" KELVO_BINARY_DIR="${PROJECT_BINARY_DIR}")
    add_test(NAME ${target} COMMAND ${target})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    set_tests_properties(${target} PROPERTIES TIMEOUT ${arg_TIMEOUT})
endfunction()

# kelvo_benchmark(name SOURCES file... [USES target...] [LINKS library...])
function(kelvo_benchmark target)
    cmake_parse_arguments(arg "" "" "SOURCES;USES;LINKS" ${ARGN})
    find_package(benchmark REQUIRED)
    add_executable(${target} ${arg_SOURCES})
    kelvo_include_root(${target})
    target_link_libraries(${target} PRIVATE
        kelvo_options Threads::Threads ${arg_USES} ${arg_LINKS} benchmark::benchmark benchmark::benchmark_main)
    target_compile_definitions(${target} PRIVATE KELVO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
endfunction()
