#!/usr/bin/env bash
# Provides the libraries of the Windows cross-build, once: OpenSSL and libcsv are built from Debian's source
# packages, what consists of headers is linked to, and OpenSSL's program is there for the tests. The tree goes to a
# folder of the user's cache that is named after this script's content and the compiler; build/windows-libraries leads
# there.
# Needs what packages-windows.txt lists, and a package list that names sources (it makes one of its own).
set -Eeuo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
host=x86_64-w64-mingw32
cache=${VARKEL_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/varkel}
made_of=$({ cat tools/windows-libraries.sh tools/debian-sources.sh; $host-gcc --version; } | sha256sum | cut -c 1-8)
prefix=$cache/windows-libraries-$made_of
stamp=$prefix/complete
mkdir -p build
rm -rf build/windows-libraries
ln -s "$prefix" build/windows-libraries
if [ -e "$stamp" ]; then
  echo "Windows libraries: $prefix is complete."
  exit 0
fi
work=$prefix/work
rm -rf "$prefix"
mkdir -p "$work" "$prefix/bin" "$prefix/include" "$prefix/lib"
. tools/debian-sources.sh
log=$prefix/build.log
: >"$log"
exec 4>&2
trap 'tail -n 30 "$log" >&4' ERR

build_libcsv() {
  local folder
  folder=$(echo "$work"/libcsv-*/)
  $host-gcc -O2 -c "$folder/libcsv.c" -I"$folder" -o "$work/libcsv.o"
  $host-ar rcs "$prefix/lib/libcsv.a" "$work/libcsv.o"
  cp "$folder/csv.h" "$prefix/include/"
}

# The folder of its settings ends up in the library: one that Windows lets only administrators write to.
build_openssl() {
  cd "$work"/openssl-*/
  ./Configure mingw64 no-shared no-tests no-engine no-legacy --cross-compile-prefix=$host- \
    --prefix='C:/Program Files/OpenSSL' --openssldir='C:/Program Files/Common Files/SSL'
  make -j"$(nproc)" build_libs
  make -j"$(nproc)" apps/openssl.exe
  cp libssl.a libcrypto.a "$prefix/lib/"
  cp apps/openssl.exe "$prefix/bin/"
  cp -r include/openssl "$prefix/include/"
  cd - >/dev/null
}

echo "Windows libraries: fetching sources and building, some minutes (log: $log)"
{
  list_sources
  fetch_newest libcsv
  fetch_newest openssl
  build_libcsv
  build_openssl
  for headers in spdlog fmt CLI tl; do
    ln -sfn "/usr/include/$headers" "$prefix/include/$headers"
  done
} >>"$log" 2>&1 </dev/null
rm -rf "$work"
touch "$stamp"
echo "Windows libraries: complete in $prefix."
