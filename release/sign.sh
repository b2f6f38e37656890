#!/usr/bin/env bash
# sign.sh BUILD TARGET CERT.pem KEY.pem [URL]: signs the programs of a build folder into the target
# folder. With the address of a time-stamping service, the signature outlives the certificate.
set -euo pipefail
build=$1 target=$2 certificate=$3 key=$4 url=${5:-}
stamp=()
[[ -z $url ]] || stamp=(-ts "$url")
rm -rf "$target"
mkdir -p "$target"
for name in Setup.exe Quenlor64.DLL Vantrel64.DLL PacketCheck.exe; do
    osslsigncode sign -h sha256 -certs "$certificate" -key "$key" -n Setup "${stamp[@]}" \
        -in "$build/$name" -out "$target/$name" >/dev/null
    printf 'signed %s\n' "$name"
done
