#!/usr/bin/env bash
# run.sh [--build]: installs what is missing, builds, and starts the editor (--build: stops there).
set -euo pipefail
cd "$(dirname "$0")"

only_build=
case "${1:-}" in
--build) only_build=1 ;;
"") ;;
*) echo "usage: ./run.sh [--build]" >&2; exit 2 ;;
esac

if [ -z "$only_build" ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    no_display=1
fi
scripts/install-packages.sh build
scripts/build.sh release kestrelvane kvn-probe
[ -z "$only_build" ] || exit 0

if [ -n "${no_display:-}" ]; then
    cat >&2 <<'TEXT'
The editor is built (build/release/bin/kestrelvane), but there is no display to show it on:
neither DISPLAY nor WAYLAND_DISPLAY is set. Start it from a desktop session, or with
    ssh -X                                           on the machine you sit at, or
    apt-get install xvfb openbox
    xvfb-run -a -s "-screen 0 1600x1000x24" ./run.sh on a virtual display.
TEXT
    exit 1
fi
exec build/release/bin/kestrelvane
