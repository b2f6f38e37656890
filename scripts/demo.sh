#!/usr/bin/env bash
# The main job, from nothing to an installed modem: sets up what it needs, builds the program, makes
# a Wine machine, plugs a virtual modem, and runs the real Setup.exe against it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

heading() { printf '\n== %s\n' "$1"; }

heading "Set-up and build"
install_missing_packages
scripts/build.sh mingw=Setup,lab/all
ls -l build/mingw/Setup.exe build/mingw/Quenlor64.DLL build/mingw/Vantrel64.DLL

machine=demo-$$
modem=demo
screenshot=build/lab/demo.png
trap 'lab/machine end "$machine"' EXIT
trap 'exit 130' INT TERM

heading "A Wine machine, and a modem that shows up as a CD-ROM"
lab/machine make "$machine" --screen
lab/machine plug "$machine" "$modem"

heading "Setup.exe -i"
installed=0
lab/machine run "$machine" -i --follow --screenshot "$screenshot" || installed=$?

heading "The modem's nodes after the installation"
lab/machine nodes "$machine"

heading "Setup.exe -u"
removed=0
lab/machine run "$machine" -u --follow || removed=$?

heading "The modem's nodes after the removal"
lab/machine nodes "$machine"
lab/machine collect "$machine" build/lab/demo

heading "What else the packet must stand, on every Windows generation, takes some minutes"
echo "lab/machine certify --packet demo --modem demo"
exit $((installed || removed))
