# cmake -DOUTPUT=header -DNAMESPACE=a::b "-DFILES=one;two" -P EmbedText.cmake
# Writes a header with one constexpr std::string_view per file, named after the file without its
# ending, that holds the file's bytes as they are. Every byte is escaped, and the literal is cut
# into short pieces: no character of the text can end it, and no compiler's line limit is met.
set(text "#pragma once\n// Generated; do not edit.\n\n#include <string_view>\n\nnamespace ${NAMESPACE} {\n")
foreach(file IN LISTS FILES)
    get_filename_component(name "${file}" NAME_WE)
    file(READ "${file}" bytes HEX)
    string(REGEX REPLACE "(..)" "\\\\x\\1" escaped "${bytes}")
    string(REGEX REPLACE "((\\\\x..)(\\\\x..)?(\\\\x..)?(\\\\x..)?(\\\\x..)?(\\\\x..)?(\\\\x..)?(\\\\x..)?)"
        "\n    \"\\1\"" literal "${escaped}")
    string(APPEND text "\ninline constexpr char ${name}Text[] =${literal};\n"
        "inline constexpr std::string_view ${name}{${name}Text, sizeof(${name}Text) - 1};\n")
endforeach()
string(APPEND text "\n} // namespace ${NAMESPACE}\n")
file(WRITE "${OUTPUT}" "${text}")
