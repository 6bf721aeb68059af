# dorix_library(NAME SOURCES ... [PUBLIC libs...] [PRIVATE libs...])
#
# A static library dorix_NAME with the alias dorix::NAME. Headers are included from src/ ("memory/MemoryStore.h");
# what a target may include is what it links, which the layering test checks.
function(dorix_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(dorix_${name} STATIC ${ARG_SOURCES})
    add_library(dorix::${name} ALIAS dorix_${name})
    target_include_directories(dorix_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(dorix_${name} PUBLIC ${ARG_PUBLIC} PRIVATE dorix_options ${ARG_PRIVATE})
endfunction()

add_custom_target(unit_tests)

# dorix_test(NAME SOURCES ... LIBS ... [LABELS ...])
#
# A GoogleTest executable that CTest runs as one test. Those labelled unit are built by the target unit_tests, which
# the sanitizer runs are content with.
function(dorix_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE dorix_options ${ARG_LIBS} GTest::gtest GTest::gmock GTest::gtest_main)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 120)
    if("unit" IN_LIST ARG_LABELS)
        add_dependencies(unit_tests ${name})
    endif()
endfunction()
