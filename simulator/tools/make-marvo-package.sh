#!/usr/bin/env bash
# make-marvo-package.sh NAME FILE: writes a sample firmware package for a Marvo sensor.
# make-marvo-package.sh --list: lists the names, one per line.
set -euo pipefail

names="full only-app-a only-app-b params small-fpga tiny-fpga no-component
too-small wrong-magic cut-off size-beyond-end offset-beyond-end wrapping-range empty-component"

# u32, least significant byte first
u32() {
  printf "\\x$(printf %02x $(($1 & 255)))\\x$(printf %02x $(($1 >> 8 & 255)))"
  printf "\\x$(printf %02x $(($1 >> 16 & 255)))\\x$(printf %02x $(($1 >> 24 & 255)))"
}

# header FLAGS (OFFSET SIZE)*5: BMB_APP_A, BMB_APP_B, BMB_FPGA, TMB_FPGA, TMB_PARAM
header() {
  local flags=$1
  shift
  printf QRNA
  u32 4096
  printf "\\x$(printf %02x "$flags")\\0\\0\\0"
  local value
  for value in "$@"; do u32 "$value"; done
  u32 0
}

# data LETTER SIZE
data() { head -c "$2" /dev/zero | tr '\0' "$1"; }

package() {
  case $1 in
    full)
      header 31 0 3000 3000 2500 5500 4096 9596 2048 11644 100
      data a 3000; data b 2500; data f 4096; data t 2048; data p 100 ;;
    only-app-a) header 1 0 2000 0 0 0 0 0 0 0 0; data a 2000 ;;
    only-app-b) header 2 0 0 0 2000 0 0 0 0 0 0; data b 2000 ;;
    params) header 16 0 0 0 0 0 0 0 0 0 1024; data p 1024 ;;
    small-fpga) header 12 0 0 0 0 0 1025 1025 1024 0 0; data f 1025; data t 1024 ;;
    tiny-fpga) header 4 0 0 0 0 0 1 0 0 0 0; data f 1 ;;
    no-component) header 0 0 0 0 0 0 0 0 0 0 0 ;;
    too-small) header 31 0 0 0 0 0 0 0 0 0 0 | { head -c 55; cat > /dev/null; } ;;
    wrong-magic) package full | sed '1s/^QRNA/QRNB/' ;;
    cut-off) package full | { head -c 9000; cat > /dev/null; } ;;
    size-beyond-end) header 16 0 0 0 0 0 0 0 0 0 4000000000; data p 100 ;;
    offset-beyond-end) header 16 0 0 0 0 0 0 0 0 4000000000 100; data p 100 ;;
    wrapping-range) header 16 0 0 0 0 0 0 0 0 4294967280 32; data p 100 ;;
    empty-component) header 16 0 0 0 0 0 0 0 0 0 0; data p 100 ;;
    *) echo "no package named $1 (see --list)" >&2; return 2 ;;
  esac
}

if [ "${1:-}" = --list ]; then
  printf '%s\n' $names
elif [ $# -eq 2 ]; then
  package "$1" > "$2"
else
  sed -n '2,3s/^# //p' "$0" >&2
  exit 2
fi
