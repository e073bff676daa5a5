#!/usr/bin/env bash
# test_signing.sh PACKAGE_FOLDER: the artefacts can be signed and the signature verified, with a certificate made for this.
set -euo pipefail

folder=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=Tavrix test" -addext extendedKeyUsage=codeSigning \
    -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
for file in "$folder"/Tavrix-*-setup.exe "$folder"/stage/windows/x*/Tavrix.dll "$folder"/stage/windows/bin/*.exe; do
    osslsigncode sign -certs "$work/certificate.pem" -key "$work/key.pem" -h sha256 -n Tavrix -in "$file" -out "$work/signed" \
        >"$work/log" || { cat "$work/log"; exit 1; }
    osslsigncode verify -CAfile "$work/certificate.pem" -in "$work/signed" >"$work/log" || { cat "$work/log"; exit 1; }
    # One byte of the signed part changed, and it must not verify.
    printf '\xff' | dd of="$work/signed" bs=1 seek=4096 conv=notrunc status=none
    if osslsigncode verify -CAfile "$work/certificate.pem" -in "$work/signed" >/dev/null 2>&1; then
        echo "${file##*/}: a changed file verifies"
        exit 1
    fi
    echo "${file##*/}: signed and verified"
    rm "$work/signed"
done
