# varkel_embed_text(TARGET HEADER FILE NAME [FILE NAME]...) Embeds the text files as constants of the target:
# std::string_view varkel::embedded::NAME, declared in the header "embedded/HEADER", which only the target
# itself can include.
function(varkel_embed_text target header)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/embedded_${target})
  set(declarations "#pragma once\n\n#include <string_view>\n\nnamespace varkel::embedded {\n")
  set(definitions "#include \"embedded/${header}\"\n\nnamespace varkel::embedded {\nnamespace {\n")
  set(views "")
  while(ARGN)
    list(POP_FRONT ARGN file name)
    get_filename_component(path ${file} ABSOLUTE)
    # As numbers, because compilers limit the length of string literals.
    file(READ ${path} bytes HEX)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND definitions "constexpr char k${name}Bytes[] = {${bytes}};\n")
    string(APPEND views "const std::string_view k${name}(k${name}Bytes, sizeof(k${name}Bytes));\n")
    string(APPEND declarations "extern const std::string_view k${name};\n")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
  endwhile()
  file(CONFIGURE OUTPUT ${folder}/embedded/${header} CONTENT "${declarations}}  // namespace varkel::embedded\n" @ONLY)
  file(CONFIGURE OUTPUT ${folder}/embedded_texts.cpp @ONLY
    CONTENT "${definitions}}  // namespace\n${views}}  // namespace varkel::embedded\n")
  target_sources(${target} PRIVATE ${folder}/embedded_texts.cpp)
  target_include_directories(${target} PRIVATE ${folder})
endfunction()
