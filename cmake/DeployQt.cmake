# varkel_deploy_qt(TARGET): installing on Windows puts Qt's libraries, plugins and QML modules, and the
# compiler's own libraries, next to the program. Elsewhere the system's packages provide them.
function(varkel_deploy_qt target)
  if(NOT WIN32)
    return()
  endif()
  if(CMAKE_CROSSCOMPILING)
    varkel_copy_qt()
    return()
  endif()
  get_target_property(qmake Qt5::qmake IMPORTED_LOCATION)
  get_filename_component(qt_programs ${qmake} DIRECTORY)
  find_program(WINDEPLOYQT NAMES windeployqt windeployqt-qt5 HINTS ${qt_programs} REQUIRED)
  # The pictures are SVG, which needs a plugin.
  install(CODE "
    execute_process(
      COMMAND \"${WINDEPLOYQT}\" --qmldir \"${CMAKE_SOURCE_DIR}/Qml\" --svg --compiler-runtime --no-translations
              \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/$<TARGET_FILE_NAME:${target}>\"
      COMMAND_ERROR_IS_FATAL ANY)")
endfunction()

# The same without Qt's tool, which runs on Windows only. Add the plugins and modules that new imports need
# here.
function(varkel_copy_qt)
  foreach(library Core Gui Qml QmlModels QmlWorkerScript Quick QuickTemplates2 Svg Widgets)
    install(FILES ${VARKEL_WINDOWS_QT}/bin/Qt5${library}.dll DESTINATION bin)
  endforeach()
  foreach(library libgcc_s_seh-1 libstdc++-6 libwinpthread-1)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}.dll
      OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
    get_filename_component(file ${file} REALPATH)
    install(FILES ${file} DESTINATION bin)
  endforeach()
  foreach(plugin platforms/qwindows styles/qwindowsvistastyle imageformats/qsvg iconengines/qsvgicon)
    get_filename_component(folder ${plugin} DIRECTORY)
    install(FILES ${VARKEL_WINDOWS_QT}/plugins/${plugin}.dll DESTINATION bin/plugins/${folder})
  endforeach()
  foreach(module QtQml QtQuick.2 QtQuick/Layouts QtQuick/Templates.2 QtQuick/Window.2 Qt/labs/platform)
    install(DIRECTORY ${VARKEL_WINDOWS_QT}/qml/${module}/ DESTINATION bin/qml/${module}
      FILES_MATCHING PATTERN *.dll PATTERN qmldir)
  endforeach()
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/windows/qt.conf DESTINATION bin)
endfunction()
