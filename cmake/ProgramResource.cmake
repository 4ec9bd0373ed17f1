# varkel_program_resource(TARGET DESCRIPTION): on Windows, the icon, the version and the manifest of a program.
function(varkel_program_resource target description)
  if(NOT WIN32)
    return()
  endif()
  set(icon_line "IDI_ICON1 ICON \"${CMAKE_SOURCE_DIR}/app/varkel.ico\"")
  set(manifest ${CMAKE_SOURCE_DIR}/app/program.manifest)
  if(MSVC)
    # This linker has its own manifest, into which CMake merges ours.
    target_sources(${target} PRIVATE ${manifest})
    set(manifest_line "")
  else()
    set(manifest_line "1 24 \"${manifest}\"")
  endif()
  configure_file(${CMAKE_SOURCE_DIR}/app/program.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}.rc PROPERTIES
    OBJECT_DEPENDS "${manifest};${CMAKE_SOURCE_DIR}/app/varkel.ico")
endfunction()
