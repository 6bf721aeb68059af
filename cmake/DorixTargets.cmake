# What every target of ours is made of and links, for the layering test.
set(DORIX_TARGETS_FILE ${PROJECT_BINARY_DIR}/targets.json)
define_property(GLOBAL PROPERTY DORIX_TARGETS BRIEF_DOCS "One JSON object for each target")

# dorix_describe(TARGET FOLDER SOURCES ... PUBLIC ... PRIVATE ...): notes down what the target is.
function(dorix_describe target folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${folder})
    set(lists "")
    foreach(list SOURCES PUBLIC PRIVATE)
        string(TOLOWER ${list} key)
        list(TRANSFORM ARG_${list} REPLACE "(.+)" "\"\\1\"")
        list(JOIN ARG_${list} ", " values)
        string(APPEND lists ", \"${key}\": [${values}]")
    endforeach()
    set_property(GLOBAL APPEND PROPERTY DORIX_TARGETS "{\"name\": \"${target}\", \"folder\": \"${folder}\"${lists}}")
endfunction()

# At the end of the configuration, when all targets are known.
function(dorix_write_targets)
    get_property(targets GLOBAL PROPERTY DORIX_TARGETS)
    list(JOIN targets ",\n" targets)
    file(WRITE ${DORIX_TARGETS_FILE} "[${targets}]\n")
endfunction()

# dorix_library(NAME [SOURCES ...] [PUBLIC libs...] [PRIVATE libs...])
#
# A library dorix_NAME with the alias dorix::NAME: the headers of the calling folder, and what is compiled beside them.
# They are included from src/ ("memory/MemoryStore.h"). The compiler finds every header there; that a target includes
# none but its own and those of what it links is for the layering test to see.
function(dorix_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    dorix_describe(dorix::${name} ${CMAKE_CURRENT_SOURCE_DIR} ${ARGN})
    if(ARG_SOURCES)
        add_library(dorix_${name} STATIC ${ARG_SOURCES})
        target_include_directories(dorix_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
        target_link_libraries(dorix_${name} PUBLIC ${ARG_PUBLIC} PRIVATE dorix_options ${ARG_PRIVATE})
    else()
        add_library(dorix_${name} INTERFACE)
        target_include_directories(dorix_${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
        target_link_libraries(dorix_${name} INTERFACE ${ARG_PUBLIC})
    endif()
    add_library(dorix::${name} ALIAS dorix_${name})
endfunction()

# dorix_executable(NAME SOURCES ... LIBS ...): a program, with our options.
function(dorix_executable name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    dorix_describe(${name} ${CMAKE_CURRENT_SOURCE_DIR} SOURCES ${ARG_SOURCES} PRIVATE ${ARG_LIBS})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE dorix_options ${ARG_LIBS})
endfunction()

add_custom_target(unit_tests)

# dorix_test(NAME SOURCES ... LIBS ... [LABELS ...])
#
# A GoogleTest executable that CTest runs as one test. Those labelled unit are built by the target unit_tests, which
# the sanitizer runs are content with.
function(dorix_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
    dorix_executable(${name} SOURCES ${ARG_SOURCES} LIBS ${ARG_LIBS})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE GTest::gtest GTest::gmock GTest::gtest_main)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 120)
    if("unit" IN_LIST ARG_LABELS)
        add_dependencies(unit_tests ${name})
    endif()
endfunction()
