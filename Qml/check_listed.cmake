# Fails when a QML file of FOLDER is missing in the resource list QRC.
file(READ ${QRC} listed)
file(GLOB_RECURSE qml_files RELATIVE ${FOLDER} ${FOLDER}/*.qml)
foreach(qml_file IN LISTS qml_files)
  string(FIND "${listed}" ">${qml_file}<" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "${qml_file} is not listed in ${QRC}")
  endif()
endforeach()
