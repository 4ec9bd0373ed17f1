# Installs the licences. The files that only Debian expects are a component of their own, which CPack installs into the
# Debian package. package.sh builds the Windows packages from the installed files.
install(FILES ${CMAKE_SOURCE_DIR}/packaging/licences/third-party.txt DESTINATION licences)
option(VARKEL_DEBIAN_PACKAGE "Let CPack build the Debian package" OFF)
# The texts for code that is compiled into the programs, then those for the libraries shipped with them.
set(texts)
if(CMAKE_CROSSCOMPILING OR VARKEL_DEBIAN_PACKAGE)
  list(APPEND texts spdlog:libspdlog-dev fmt:libfmt-dev cli11:libcli11-dev tl-expected:libexpected-dev
    roboto:fonts-roboto-unhinted)
endif()
if(CMAKE_CROSSCOMPILING)
  list(APPEND texts qtbase:libqt5core5a qtdeclarative:libqt5qml5 qtquickcontrols2:libqt5quicktemplates2-5 qtsvg:libqt5svg5
    openssl:libssl-dev libcsv:libcsv-dev gcc:gcc-12-base mingw-w64:mingw-w64-common nsis:nsis-common)
endif()
foreach(text IN LISTS texts)
  string(REPLACE ":" ";" text ${text})
  list(GET text 0 name)
  list(GET text 1 package)
  install(FILES /usr/share/doc/${package}/copyright DESTINATION licences RENAME ${name}.txt)
endforeach()
if(CMAKE_CROSSCOMPILING)
  foreach(name Apache-2.0 GPL-3 LGPL-2.1 LGPL-3)
    install(FILES /usr/share/common-licenses/${name} DESTINATION licences RENAME ${name}.txt)
  endforeach()
endif()

if(NOT VARKEL_DEBIAN_PACKAGE)
  return()
endif()

# The program's own root, with its fonts, tables and pictures.
set(root /usr/lib/varkel)
set(debian ${CMAKE_SOURCE_DIR}/packaging/debian)
set(for_debian COMPONENT debian EXCLUDE_FROM_ALL)
install(CODE "
  file(MAKE_DIRECTORY \"\$ENV{DESTDIR}/usr/bin\")
  foreach(program ${shipped})
    file(CREATE_LINK ../lib/varkel/bin/\${program} \"\$ENV{DESTDIR}/usr/bin/\${program}\" SYMBOLIC)
  endforeach()" ${for_debian})
install(FILES ${debian}/varkel.desktop DESTINATION /usr/share/applications ${for_debian})
install(FILES ${debian}/copyright DESTINATION /usr/share/doc/varkel ${for_debian})
install(FILES ${CMAKE_SOURCE_DIR}/png/Varkel-LOGO-black.svg DESTINATION /usr/share/icons/hicolor/scalable/apps
  RENAME varkel.svg ${for_debian})

# compressed(SOURCE TARGET): without a name and a time in the file, so that builds are reproducible.
function(compressed source target)
  get_filename_component(folder ${target} DIRECTORY)
  get_filename_component(name ${target} NAME)
  set(result ${CMAKE_BINARY_DIR}/debian/${name})
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/debian)
  execute_process(COMMAND gzip -9nc ${source} OUTPUT_FILE ${result} COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${result} DESTINATION ${folder} ${for_debian})
endfunction()

# The time of the change log's entry is that of the packaged commit, which package.sh passes on.
string(TIMESTAMP changed "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${debian}/changelog.in ${CMAKE_BINARY_DIR}/debian/changelog @ONLY)
compressed(${CMAKE_BINARY_DIR}/debian/changelog /usr/share/doc/varkel/changelog.gz)
file(GLOB manuals CONFIGURE_DEPENDS ${debian}/*.1)
foreach(manual IN LISTS manuals)
  get_filename_component(name ${manual} NAME_WE)
  if(name IN_LIST shipped)
    compressed(${manual} /usr/share/man/man1/${name}.1.gz)
  endif()
endforeach()
add_custom_command(OUTPUT debian/varkelctl.1.gz
  COMMAND gzip -9nc ${CMAKE_BINARY_DIR}/cli/varkelctl.1 > debian/varkelctl.1.gz
  DEPENDS ${CMAKE_BINARY_DIR}/cli/varkelctl.1)
add_custom_target(debian_manual ALL DEPENDS debian/varkelctl.1.gz)
add_dependencies(debian_manual varkelctl_manual)
add_dependencies(shipped debian_manual)
install(FILES ${CMAKE_BINARY_DIR}/debian/varkelctl.1.gz DESTINATION /usr/share/man/man1 ${for_debian})
install(FILES ${CMAKE_BINARY_DIR}/cli/varkelctl.bash DESTINATION /usr/share/bash-completion/completions RENAME varkelctl
  ${for_debian})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME varkel)
set(CPACK_PACKAGE_VENDOR QuarnTech)
set(CPACK_PACKAGE_CONTACT "QuarnTech <support@quarntech.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Inspects and configures a lidar sensor")
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX ${root})
set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};Varkel;Unspecified;/;${CMAKE_BINARY_DIR};Varkel;debian;/")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Connects to a sensor over Ethernet or serial lines, reads the pages of its
model, changes values and saves them, sends raw commands, downloads logs and
upgrades the firmware. A simulated sensor is part of it.")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# Linked libraries are detected automatically; those loaded at run time are listed here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
string(JOIN ", " CPACK_DEBIAN_PACKAGE_DEPENDS
  libegl1
  libgl1-mesa-dri
  libglx-mesa0
  libqt5svg5
  qml-module-qt-labs-platform
  qml-module-qtqml
  qml-module-qtquick-layouts
  qml-module-qtquick-templates2
  qml-module-qtquick-window2
  qml-module-qtquick2)
include(CPack)
