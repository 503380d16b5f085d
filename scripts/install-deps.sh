#!/usr/bin/env bash
# Installs the Debian 12 packages that building and testing KorvelEdit needs, when missing.
# Usage: scripts/install-deps.sh [build|test|bench|fuzz]...   (build is always included)
set -euo pipefail

packages=(cmake ninja-build g++ qt6-base-dev qt6-base-dev-tools libgl-dev fonts-ipafont-gothic)
for need in "$@"; do
    case "$need" in
    build) ;;
    test) packages+=(libgtest-dev libgmock-dev libpython3.11-testsuite desktop-file-utils xdg-utils
                     shared-mime-info) ;;
    bench) packages+=(libbenchmark-dev nkf icu-devtools libc-bin time python3 manpages manpages-dev
                      manpages-ja manpages-ja-dev debian-policy-ja aptitude-doc-ja
                      libpython3.11-testsuite xvfb) ;;
    fuzz) packages+=(clang libclang-rt-14-dev libfuzzer-14-dev) ;;
    *) echo "install-deps.sh: unknown group '$need'" >&2; exit 2 ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
        missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
