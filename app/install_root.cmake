# What the program finds beside itself: fonts, pictures and tables, copied into the build tree's root and
# installed into the same places.
find_file(ROBOTO_BOLD Roboto-Bold.ttf PATHS /usr/share/fonts PATH_SUFFIXES truetype/roboto/unhinted/RobotoTTF
  REQUIRED)
find_file(ROBOTO_REGULAR Roboto-Regular.ttf PATHS /usr/share/fonts
  PATH_SUFFIXES truetype/roboto/unhinted/RobotoTTF REQUIRED)

# install_root_file(SOURCE TARGET): TARGET is the path below the root.
function(install_root_file source target)
  configure_file(${source} ${CMAKE_BINARY_DIR}/${target} COPYONLY)
  get_filename_component(folder ${target} DIRECTORY)
  get_filename_component(name ${target} NAME)
  install(FILES ${source} DESTINATION ${folder} RENAME ${name})
endfunction()

install_root_file(${ROBOTO_BOLD} fonts/Roboto-Bold-3.ttf)
install_root_file(${ROBOTO_REGULAR} fonts/Roboto-Regular-14.ttf)
install_root_file(${CMAKE_SOURCE_DIR}/png/Varkel-LOGO-black.svg png/Varkel-LOGO-black.svg)

file(GLOB MODEL_TABLES CONFIGURE_DEPENDS RELATIVE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/Config/varID/*.csv)
foreach(model_table IN LISTS MODEL_TABLES)
  install_root_file(${CMAKE_SOURCE_DIR}/${model_table} ${model_table})
endforeach()
