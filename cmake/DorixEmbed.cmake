# dorix_embed(TARGET FILE SYMBOL)
#
# Puts a file's bytes into a target, as `extern const std::array<unsigned char, SIZE> SYMBOL` in the namespace
# dorix::embedded, declared in "embedded/SYMBOL.h" under the folder of the calling CMakeLists.txt.
function(dorix_embed target file symbol)
    get_filename_component(source ${file} ABSOLUTE)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    file(READ ${source} hex HEX)
    file(SIZE ${source} size)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/embedded)
    file(RELATIVE_PATH header ${PROJECT_BINARY_DIR}/src ${folder}/${symbol}.h)
    set(declaration "const std::array<unsigned char, ${size}> ${symbol}")
    file(CONFIGURE OUTPUT ${folder}/${symbol}.h @ONLY CONTENT
        "#pragma once\n\n#include <array>\n\nnamespace dorix::embedded {\nextern @declaration@;\n}\n")
    file(CONFIGURE OUTPUT ${folder}/${symbol}.cpp @ONLY CONTENT
        "#include \"@header@\"\n\nnamespace dorix::embedded {\n@declaration@{@bytes@};\n}\n")
    target_sources(${target} PRIVATE ${folder}/${symbol}.cpp)
    target_include_directories(${target} PRIVATE ${PROJECT_BINARY_DIR}/src)
endfunction()
