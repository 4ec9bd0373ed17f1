#!/usr/bin/env bash
# certificates.sh FOLDER: makes a small certificate authority and what TLS tests need of it, as PEM files.
#   ca.pem, other-ca.pem            two authorities
#   server.pem/.key, expired.pem    of ca: a peer for 127.0.0.1, good and out of date (one key for both)
#   client.pem/.key                 of ca: the tool's own identity
#   locked.key                      client.key, locked with a pass phrase
set -euo pipefail
mkdir -p "$1"
cd "$1"
trap 'cat openssl.log >&2' ERR
exec 3>openssl.log

key() { openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out "$1" 2>&3; }
authority() { # NAME
  key "$1.key"
  openssl req -x509 -new -key "$1.key" -subj "/CN=$1" -days 30 -out "$1.pem" 2>&3
}
leaf() { # NAME KEY DAYS: signed by ca
  openssl req -new -key "$2" -subj "/CN=$1" -out "$1.csr" 2>&3
  openssl x509 -req -in "$1.csr" -CA ca.pem -CAkey ca.key -set_serial "0x$(openssl rand -hex 8)" -days "$3" \
    -extfile <(echo 'subjectAltName=IP:127.0.0.1') -out "$1.pem" 2>&3
}

authority ca
authority other-ca
key server.key
leaf server server.key 30
leaf expired server.key -1
key client.key
leaf client client.key 30
openssl pkey -in client.key -aes256 -passout pass:secret -out locked.key 2>&3
