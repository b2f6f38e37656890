#!/usr/bin/env bash
# Builds what people take: build/release/setup-VERSION-win64.zip, its symbols, and the sums of both.
#   --sign CERT.pem KEY.pem   signs the programs in the zip
#   --timestamp URL           has a time-stamping service confirm when (with --sign)
#   --twice                   builds once more in another folder, and compares the zips
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

usage() {
    sed -n '3,5s/^# *//p' "$0" >&2
    exit 2
}
certificate= key= url= twice=
while (($# > 0)); do
    case $1 in
        --sign) (($# >= 3)) || usage; certificate=$2 key=$3; shift 3 ;;
        --timestamp) (($# >= 2)) || usage; url=$2; shift 2 ;;
        --twice) twice=1; shift ;;
        *) usage ;;
    esac
done
[[ -z $url || -n $certificate ]] || usage
for file in "$certificate" "$key"; do
    [[ -z $file || -r $file ]] || { echo "release: $file cannot be read" >&2; exit 2; }
done

install_missing_packages
if [[ -n $(git status --porcelain) ]]; then
    echo "release: there are changes that are not committed; the zip is for trying only" >&2
fi
scripts/build.sh mingw
build=build/mingw
python3 -B tests/imports/check_image.py "$build"/{Setup.exe,Quenlor64.DLL,Vantrel64.DLL}

signed=()
if [[ -n $certificate ]]; then
    release/sign.sh "$build" build/release/signed "$certificate" "$key" ${url:+"$url"}
    signed=(build/release/signed)
fi
/usr/bin/python3 -B release/make_release.py "$build" build/release "${signed[@]}"

if [[ -n $twice ]]; then
    elsewhere=$(mktemp -d "${TMPDIR:-/tmp}/setup-again-XXXXXX")
    trap 'rm -rf "$elsewhere"' EXIT
    git clone -q . "$elsewhere/sources"
    (cd "$elsewhere/sources" && scripts/release.sh >/dev/null)
    cmp build/release/SHA256SUMS "$elsewhere/sources/build/release/SHA256SUMS"
    echo "a build in another folder gave the same zips"
fi
