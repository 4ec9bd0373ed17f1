#!/usr/bin/env bash
# certificates.sh FOLDER: creates a small certificate authority and the PEM files that TLS tests need.
#   ca.pem, other-ca.pem            two authorities
#   server.pem/.key, expired.pem    signed by ca: a peer at 127.0.0.1, valid and expired (same key)
#   client.pem/.key                 signed by ca: the tool's own identity
#   locked.key                      client.key, encrypted with a pass phrase
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
