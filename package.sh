#!/usr/bin/env bash
# Makes the packages from a fresh clone, into dist/: a .deb for Debian 12, and a setup and a .zip for Windows.
# ./package.sh [--debian | --windows] [--dist FOLDER]
#
# Two runs on the same commit make the same bytes. Qt for Windows is taken from where tools/windows-qt.sh finds it, or
# built, which takes half an hour.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
root=$PWD
dist=$root/dist
debian=yes
windows=yes
while [ $# -gt 0 ]; do
  case $1 in
    --debian) windows= ;;
    --windows) debian= ;;
    --dist) dist=$(realpath -m "${2:?--dist needs a folder}"); shift ;;
    *) echo "./package.sh [--debian | --windows] [--dist FOLDER]" >&2; exit 2 ;;
  esac
  shift
done

tools/install-packages.sh packages.txt packages-windows.txt packages-packaging.txt
version=$(sed -n 's/^project(Varkel VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH
umask 022
export LC_ALL=C.UTF-8 TZ=UTC
mkdir -p "$dist"

# same_time FOLDER: everything below it is as old as the commit.
same_time() { find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +; }

package_debian() {
  tools/build.sh release shipped
  local work=$root/build/package-debian
  rm -rf "$work"
  mkdir -p "$work"
  (cd build/release && cpack -G DEB -B "$work" >cpack.log 2>&1) || { cat build/release/cpack.log >&2; exit 1; }
  mv "$work/varkel_${version}_amd64.deb" "$dist/"
}

# un.RemoveFiles of the setup: deletes each file by name, then each empty folder. Other files belong to the user.
removal_script() {
  echo 'Function un.RemoveFiles'
  (cd "$1" && find . -type f | sort | sed 's|^\./||; s|/|\\|g; s|.*|  Delete "$INSTDIR\\&"|')
  (cd "$1" && find . -mindepth 1 -type d | sort -r | sed 's|^\./||; s|/|\\|g; s|.*|  RMDir "$INSTDIR\\&"|')
  echo 'FunctionEnd'
}

package_windows() {
  tools/windows-libraries.sh
  tools/windows-qt.sh
  tools/build.sh windows shipped
  local work=$root/build/package-windows
  local folder=$work/Varkel-$version
  rm -rf "$work"
  mkdir -p "$folder"
  cmake --install build/windows --prefix "$folder" >"$work/install.log"
  # Debian's libstdc++ alone has 22 MB of symbols. Without -p each file's time would be that of stripping.
  find "$folder" \( -name '*.exe' -o -name '*.dll' \) -exec x86_64-w64-mingw32-strip -p --strip-unneeded {} +
  local options=()
  if [ -e "$folder/bin/varkelctl.exe" ]; then
    # A folder of its own, so that no DLLs are added to the path.
    mkdir "$folder/command"
    printf '@"%%~dp0..\\bin\\varkelctl.exe" %%*\r\n' >"$folder/command/varkelctl.cmd"
    options+=(-DWITH_COMMAND)
  fi
  sed -i 's/$/\r/' "$folder"/licences/*.txt
  same_time "$folder"
  local name=Varkel-$version
  rm -f "$dist/$name.zip"
  (cd "$work" && find "$name" | sort | zip -q -X -9 -@ "$dist/$name.zip")
  removal_script "$folder" >"$work/files.nsh"
  (cd packaging/windows && makensis -V2 -DVERSION="$version" -DSOURCE="$folder" -DFILES="$work/files.nsh" \
    -DICON="$root/app/varkel.ico" -DOUTPUT="$dist/$name-setup.exe" "${options[@]}" setup.nsi)
}

[ -z "$debian" ] || package_debian
[ -z "$windows" ] || package_windows
echo "Packages in $dist:"
(cd "$dist" && ls -l --block-size=K "varkel_$version"_* "Varkel-$version"* 2>/dev/null | awk '{ print "  " $NF ", " $5 }')
