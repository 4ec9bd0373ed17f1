#!/usr/bin/env bash
# windows-qt.sh [--from FILE | --if-at-hand | --build]: provides Qt for the Windows cross-build, once.
#
#   --from FILE    unpacks a packed tree, the one whose hash is given below
#   --if-at-hand   takes what needs no building, or says that there is none (and ends with 3)
#   --build        builds it from Debian's source packages, though a packed tree may be at hand
#
# Without an option: what is at hand, or else builds. At hand is what an earlier call left in the cache, and the packed
# tree ../shared/qt-windows.tar.xz beside the checkout. The tree goes to a folder of the user's cache that names version
# and options; build/windows-qt leads there. Building takes 40 minutes of processor time and 2.8 GB while it runs; the
# tree has 113 MB (13 MB packed). Its host tools are Debian's own, linked to.
set -Eeuo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD

version=5.15.8
# Of the .dsc files, which hold the hashes of the archives.
sources=(
  "qtbase-opensource-src 5.15.8+dfsg-11+deb12u3 f442936526e336a033acb1021bfed0d59b42ee520483a015cf245478c75b3b7f"
  "qtdeclarative-opensource-src 5.15.8+dfsg-3 32266c2d6fa6125b0fa016c148d761f457bd2f1de967744801e3b8b7b0c08981"
  "qtquickcontrols2-opensource-src 5.15.8+dfsg-2 4ce0ef89d670e70c36c4f1e107c8ef9736ad649133a332e0cfcda15becd66300"
  "qtsvg-opensource-src 5.15.8-3 4d25b3ee99370815f990cc1840af476dffc2ccd5df49c51dd3f497cda778eeaf"
)
packed_sha256=a5a09d5cf2cde99f90ff2d4e7e8364711747539ffd18b99fc1830c37abc074ac
host=x86_64-w64-mingw32
host_tools=/usr/lib/qt5/bin

# Only what the tool uses, with the libraries that Qt brings along. Without OpenGL, Qt Quick paints by itself.
base_options=(-xplatform win32-g++ -device-option CROSS_COMPILE=$host- -external-hostbindir $host_tools
  -release -shared -opensource -confirm-license -nomake examples -nomake tests -nomake tools
  -no-opengl -no-vulkan -no-direct2d -no-dbus -no-icu -no-openssl -no-freetype -no-libjpeg -no-gif -no-ico
  -qt-zlib -qt-libpng -qt-pcre -qt-harfbuzz -qt-doubleconversion)
base_without=(network sql xml concurrent printer tabletevent vkgen statemachine qeventtransition sessionmanager
  systemtrayicon textmarkdownwriter textodfwriter
  calendarwidget colordialog columnview datawidgetmapper datetimeedit dial errormessage fontdialog graphicsview
  graphicseffect inputdialog keysequenceedit lcdnumber mdiarea progressdialog syntaxhighlighter toolbox undocommand
  undostack undogroup undoview wizard)
declarative_without=(qml-debug quick-designer quick-sprite quick-particles d3d12)

options_name=$(printf '%s\n' "${sources[@]}" "${base_options[@]}" "${base_without[@]}" "${declarative_without[@]}" |
  sha256sum | cut -c 1-8)
cache=${VARKEL_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/varkel}
tree=$cache/qt-windows-$version-software-$options_name
stamp=$tree/complete

unpack() {
  echo "$packed_sha256  $1" | sha256sum --check --quiet || {
    echo "$1 is not the packed tree of Qt $version that is known here." >&2
    exit 1
  }
  local unpacked
  mkdir -p "$cache"
  unpacked=$(mktemp -d "$cache/unpacking.XXXXXX")
  tar -xJf "$1" -C "$unpacked"
  settle "$unpacked/qt-windows-$version"
  rmdir "$unpacked"
}

# Only a whole tree gets the name, however the script ends.
settle() {
  rm -rf "$tree"
  touch "$1/complete"
  mv "$1" "$tree"
  echo "Qt for Windows: complete in $tree."
}

configure_base() {
  mkdir -p "$work/base"
  cd "$work/base"
  local without=("${base_without[@]/#/-no-feature-}")
  "$work/qtbase-opensource-src/configure" -prefix "$made" "${base_options[@]}" "${without[@]}"
}

# make_in FOLDER...: builds and installs these folders of the current build tree.
make_in() {
  local folder
  for folder in "$@"; do
    make -C "$folder" -j"$(nproc)"
    make -C "$folder" install
  done
}

# Folder by folder, so that Qt's own host tools are never built.
build_base() {
  sed -i '/qinputdialog\.h/d' "$work/qtbase-opensource-src/src/plugins/styles/windowsvista/qwindowsvistastyle_p_p.h"
  cd "$work/base"
  make sub-src-qmake_all  # not qmake -r, which reads a module's project before the features of those below it are known
  make -C src/3rdparty/pcre2 -j"$(nproc)"
  make -C src/corelib -f Makefile.qtzlib all install
  make_in src/corelib src/winmain
  make -C src/3rdparty/harfbuzz-ng -j"$(nproc)"
  make_in src/3rdparty/libpng src/gui src/platformheaders src/platformsupport src/plugins/platforms/windows \
    src/widgets src/plugins/styles src/testlib
  make install_mkspecs install_syncqt sub-qmake-qmake-aux-pro-install_subtargets
  local tool
  for tool in moc rcc uic qlalr qmlcachegen qmltyperegistrar qmlimportscanner qmllint qmlmin; do
    ln -sfn "$host_tools/$tool" "$made/bin/$tool"
  done
}

# The host tools that run while Qt builds are Debian's. qmake needs the description of qmltyperegistrar before it reads the
# first project.
build_declarative() {
  local source=$work/qtdeclarative-opensource-src
  sed -i -e '/^    qmltyperegistrar \\$/d' -e '/SUBDIRS += qmldevtools/d' "$source/src/src.pro"
  cp "$source/src/qmltyperegistrar/qmltypes.prf" "$made/mkspecs/features/"
  mkdir -p "$work/declarative"
  cd "$work/declarative"
  "$made/bin/qmake" "$source" -- "${declarative_without[@]/#/-no-feature-}"
  make sub-src-qmake_all
  make_in src/qml src/qmlmodels src/qmlworkerscript src/quick
  make_in src/imports/{builtins,qtqml,models,folderlistmodel,workerscript,settings,layouts,qtquick2,window}
  # Debian's QML compiler, found where this tree has it.
  local compiler=lib/cmake/Qt5QuickCompiler
  mkdir -p "$made/$compiler"
  cp /usr/lib/x86_64-linux-gnu/cmake/Qt5QuickCompiler/*.cmake "$made/$compiler/"
  sed -i 's|/lib/qt5/bin/qmlcachegen|/bin/qmlcachegen|' "$made/$compiler/Qt5QuickCompilerConfig.cmake"
}

build_rest() {
  mkdir -p "$work/controls" "$work/svg"
  cd "$work/controls"
  "$made/bin/qmake" "$work/qtquickcontrols2-opensource-src"
  make sub-src-qmake_all
  make_in src/quicktemplates2 src/imports/templates src/imports/platform
  cd "$work/svg"
  "$made/bin/qmake" "$work/qtsvg-opensource-src"
  make -j"$(nproc)"
  make install
}

fetch_sources() {
  local source
  list_sources
  for source in "${sources[@]}"; do
    # shellcheck disable=SC2086
    fetch_pinned $source
  done
}

build() {
  tools/install-packages.sh packages.txt packages-windows.txt
  mkdir -p "$cache"
  work=$cache/qt-windows-work
  made=$work/qt-windows-$version
  log=$cache/qt-windows.log
  rm -rf "$work"
  mkdir -p "$work"
  . tools/debian-sources.sh
  exec 4>&2
  trap 'tail -n 30 "$log" >&4' ERR
  echo "Qt for Windows: fetching $version from Debian's sources and building, about half an hour (log: $log)"
  (fetch_sources; configure_base; build_base; build_declarative; build_rest) >"$log" 2>&1 </dev/null
  settle "$made"
  rm -rf "$work"
}

beside=$root/../shared/qt-windows.tar.xz
case ${1:-} in
  --from|''|--if-at-hand|--build)
    if [ -e "$stamp" ]; then
      echo "Qt for Windows: $tree is complete."
    elif [ "${1:-}" = --from ]; then
      unpack "${2:?--from needs a file}"
    elif [ "${1:-}" != --build ] && [ -e "$beside" ]; then
      unpack "$beside"
    elif [ "${1:-}" = --if-at-hand ]; then
      echo "Qt for Windows: not at hand. tools/windows-qt.sh makes it, once, in about half an hour."
      exit 3
    else
      build
    fi
    ;;
  *) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "${BASH_SOURCE[0]}" >&2; exit 2 ;;
esac
mkdir -p "$root/build"
ln -sfn "$tree" "$root/build/windows-qt"
