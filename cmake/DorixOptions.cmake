set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

set(DORIX_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")
option(DORIX_FUZZ "Build the fuzz targets" OFF)
option(DORIX_BENCH "Build the benchmarks" OFF)

# Only clang is supported: g++ 12 destroys the temporaries of a co_await expression twice.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "DORIX is built with clang; configure with one of the presets (cmake --preset dev)")
endif()

add_library(dorix_options INTERFACE)
target_compile_options(dorix_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wold-style-cast -Wimplicit-fallthrough -Wextra-semi
    # Designated initialisers name what differs from the record's defaults; leaving the rest out is their use.
    -Wno-missing-designated-field-initializers)

if(DORIX_SANITIZE)
    add_compile_options(-fsanitize=${DORIX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${DORIX_SANITIZE})
endif()
if(DORIX_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
