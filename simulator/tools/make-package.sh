#!/bin/sh
# Writes a firmware package that the simulated sensor accepts, always the same bytes for the same arguments:
#   make-package.sh VERSION DATE SIZE > file.patch
# VERSION is major.minor.patch.build (each 0 to 255), DATE is YYYY-MM-DD, SIZE the whole package in bytes.
# The sensor shows version and date after its next restart.
LC_ALL=C
export LC_ALL

usage() {
  echo "make-package.sh: $1" >&2
  echo "Usage: make-package.sh VERSION DATE SIZE > file.patch, e.g. make-package.sh 3.5.0.1 2024-11-05 20000" >&2
  exit 2
}

[ $# -eq 3 ] || usage "there are $# arguments, not three."
printf '%s\n' "$1" | awk -F. 'NF != 4 { exit 1 } { for (i = 1; i <= 4; i++) if ($i !~ /^[0-9]+$/ || $i > 255) exit 1 }' ||
  usage "\"$1\" is not a version of four numbers from 0 to 255."
printf '%s\n' "$2" | awk -F- '!/^[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]$/ || $2 < 1 || $2 > 12 || $3 < 1 || $3 > 31 { exit 1 }' ||
  usage "\"$2\" is not a date of the form YYYY-MM-DD."
case $3 in
  '' | *[!0-9]*) usage "\"$3\" is not a size in bytes." ;;
esac

head="VARKEL-SIM FIRMWARE $1 $2"
[ "$3" -gt ${#head} ] || usage "$3 bytes don't hold the first line, which has $((${#head} + 1))."

# After the first line, bytes 1 to 255 in a fixed shuffled order; no NUL, which awk programs handle differently.
awk -v head="$head" -v size="$3" 'BEGIN {
  printf "%s\n", head
  state = 1
  for (i = length(head) + 1; i < size; i++) {
    state = (state * 16807) % 2147483647
    printf "%c", 1 + state % 255
  }
}'
