#!/usr/bin/env bash
# install-packages.sh KIND...: installs the packages of scripts/packages.txt that are missing.
# Takes well under a second when none is.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

if ! command -v dpkg-query >/dev/null; then
    echo "This is no Debian system: install by hand what scripts/packages.txt lists." >&2
    exit 1
fi

# A release without a number is the coming one.
release=$(. /etc/os-release && echo "${VERSION_ID:-999}")
release=${release%%.*}

# First round: everything that is installed already, in one query.
installed=$(dpkg-query -W -f '${db:Status-Abbrev} ${binary:Package}\n' | sed -n 's/^ii  *\([^:]*\).*/\1/p')
missing=()
while read -r kind name from; do
    case " $* " in *" $kind "*) ;; *) continue ;; esac
    [ "$release" -ge "${from:-0}" ] || continue
    grep -qxF -- "$name" <<<"$installed" || missing+=("$name")
done < <(grep -v '^#' "$here/packages.txt" | grep .)
[ ${#missing[@]} -gt 0 ] || exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Packages are missing and there is no sudo: run scripts/install-packages.sh $* as root." >&2; exit 1; }
    root=(sudo)
fi
apt() { "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=900 -qq "$@"; }

echo "Installing: ${missing[*]}" >&2
apt update
apt install -y --no-install-recommends "${missing[@]}" >/dev/null
