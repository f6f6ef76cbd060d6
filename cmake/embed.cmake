# Files that a program holds: lexon_embed(TARGET NAME FILE) gives the target a text lexon::embedded::NAME with what is in
# FILE at build time, and lexon::embedded::NAME_hash, its SHA-256 in base64, for a content security policy. Both are
# declared as `extern const std::string_view` by who uses them.
function(lexon_embed target name file)
  get_filename_component(file ${file} ABSOLUTE)
  set(made ${CMAKE_CURRENT_BINARY_DIR}/embedded/${name}.cpp)
  add_custom_command(OUTPUT ${made}
    COMMAND ${CMAKE_COMMAND} -DNAME=${name} -DFILE=${file} -DMADE=${made}
      -P ${PROJECT_SOURCE_DIR}/cmake/embed_file.cmake
    DEPENDS ${file} ${PROJECT_SOURCE_DIR}/cmake/embed_file.cmake VERBATIM)
  target_sources(${target} PRIVATE ${made})
endfunction()
