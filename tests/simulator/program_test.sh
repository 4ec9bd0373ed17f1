#!/bin/sh
# The program as a user starts it: what it prints, what it refuses, how it ends. Usage: program_test.sh PROGRAM TABLES
program=$1
tables=$2
work=$(mktemp -d)
trap 'kill "$sensor" 2>/dev/null; rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $1"
  cat "$work"/*
  exit 1
}

# Starts a sensor and waits for the line that begins with $1; `where` is what follows there.
start() {
  words=$1
  shift
  : >"$work/out"
  "$program" --config "$tables" "$@" >"$work/out" 2>"$work/err" &
  sensor=$!
  tries=0
  until where=$(sed -n "s/^$words//p" "$work/out") && [ -n "$where" ]; do
    kill -0 "$sensor" 2>/dev/null || fail "the sensor ended instead of starting"
    tries=$((tries + 1))
    [ "$tries" -lt 200 ] || fail "no line \"$words\" within 10 s"
    sleep 0.05
  done
}

# A refusal: status 1 and one sentence with the given words on standard error.
refuses() {
  words=$1
  shift
  "$program" --config "$tables" "$@" >"$work/out" 2>"$work/err"
  [ $? -eq 1 ] || fail "status of $*"
  grep -q "^varkel-sim: .*$words" "$work/err" || fail "sentence of $*"
}

for signal in INT TERM; do
  start 'listening on 127\.0\.0\.1:' --port 0 --model Zelto-KTC --fault 0x07=silence --restart-time 50
  refuses "$where: the port is in use" --port "$where"
  kill -s "$signal" "$sensor"
  wait "$sensor" || fail "status $? after SIG$signal"
done

# A steady stream beside the port, at 1.6 Mbit/s, and TLS on it with files that are not there.
start 'listening on 127\.0\.0\.1:' --port 0 --stream 127.0.0.1:9 --stream-mbit 1.6 --stream-size 1000
kill "$sensor"
wait "$sensor" || fail "status $? of the sensor with a stream"
grep -q '^datagrams: [0-9]*[1-9][0-9]* sent' "$work/out" || fail "no count of datagrams"
refuses '"127.0.0.1".*no IP version 4 address and port' --stream 127.0.0.1:99999
refuses 'The certificate in "absent.pem".*No such file' --tls --certificate absent.pem --key absent.key

# The model without a network: two lines, reached through links that go with the sensor.
touch "$work/file"
refuses "Can't link $work/file" --model Zelto --uart-link "$work/file"
[ -f "$work/file" ] || fail "a file had to make place for a link"
ln -s nowhere "$work/uart"
start 'serial lines: ' --model Zelto --rs485-link "$work/rs485" --uart-link "$work/uart"
[ "$(readlink "$work/rs485") $(readlink "$work/uart")" = "$where" ] || fail "links"
[ -c "$work/uart" ] || fail "no line at the link"
kill "$sensor"
wait "$sensor" || fail "status $? of the sensor on serial lines"
[ ! -L "$work/rs485" ] && [ ! -L "$work/uart" ] || fail "links that stay"

refuses 'no table of a model "Nobody".*Quenta, Zelto' --model Nobody
refuses '"0x07=shouting" has an unknown kind' --fault 0x07=shouting
echo PASSED
