# varkel_deploy_qt(TARGET): installing on Windows puts Qt's libraries, plugins and QML modules, and the compiler's
# own libraries, beside the program. Elsewhere the system's packages provide them.
function(varkel_deploy_qt target)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(qmake Qt5::qmake IMPORTED_LOCATION)
  get_filename_component(qt_programs ${qmake} DIRECTORY)
  find_program(WINDEPLOYQT NAMES windeployqt windeployqt-qt5 HINTS ${qt_programs} REQUIRED)
  # The pictures are SVG, which only a plugin knows of.
  install(CODE "
    execute_process(
      COMMAND \"${WINDEPLOYQT}\" --qmldir \"${CMAKE_SOURCE_DIR}/Qml\" --svg --compiler-runtime --no-translations
              \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/$<TARGET_FILE_NAME:${target}>\"
      COMMAND_ERROR_IS_FATAL ANY)")
endfunction()
