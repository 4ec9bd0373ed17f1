# What the tool finds beside itself, with the model tables: fonts, pictures and its documents, copied into the build tree's root
# and installed into the same places.
set(VARKEL_FONTS "" CACHE PATH "Folder of Roboto-Bold.ttf and Roboto-Regular.ttf, where no package provides them")
set(font_folders HINTS ${VARKEL_FONTS} PATHS /usr/share/fonts PATH_SUFFIXES truetype/roboto/unhinted/RobotoTTF
  NO_CMAKE_FIND_ROOT_PATH)
find_file(ROBOTO_BOLD Roboto-Bold.ttf ${font_folders} REQUIRED)
find_file(ROBOTO_REGULAR Roboto-Regular.ttf ${font_folders} REQUIRED)

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
foreach(document model-table protocol serial-protocol varkelctl wireshark)
  install_root_file(${CMAKE_SOURCE_DIR}/docs/${document}.md docs/${document}.md)
endforeach()
