# The model tables, which the tool and the simulator look up below their install root: copied into the build
# tree's root and installed.
file(GLOB MODEL_TABLES CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/Config/varID/*.csv)
foreach(model_table IN LISTS MODEL_TABLES)
  configure_file(${CMAKE_SOURCE_DIR}/${model_table} ${CMAKE_BINARY_DIR}/${model_table} COPYONLY)
  install(FILES ${model_table} DESTINATION Config/varID)
endforeach()
