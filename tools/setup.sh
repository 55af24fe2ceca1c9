#!/bin/bash
# Installs the Debian packages that building, testing and the demo need and that are missing. Says what it does;
# does nothing where everything is there. Runs apt-get as root, or through sudo for anyone else.
set -euo pipefail

packages=(
    g++ make cmake ninja-build pkg-config ccache
    clang clang-format-14                    # fuzzing, formatting
    juce-modules-source libxcursor-dev       # plug-in, window, files
    libjpeg-dev libpng-dev zlib1g-dev libfreetype-dev
    libx11-dev libxext-dev libxrandr-dev libxinerama-dev libgl-dev
    libcli11-dev nlohmann-json3-dev          # command line, patches as text
    libgtest-dev libgmock-dev libbenchmark-dev
    xvfb                                     # pictures of the window without a screen
)

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [ "$status" = "install ok installed" ] || missing+=("$package")
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all packages are installed"
    exit 0
fi

run=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: these packages are missing, and there is neither root nor sudo to install them: ${missing[*]}" >&2
        exit 1
    fi
    run=(sudo)
fi

echo "setup: installing ${missing[*]}"
install=(env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}")
if ! "${run[@]}" "${install[@]}" >/dev/null 2>&1; then
    echo "setup: refreshing the package lists first"
    "${run[@]}" apt-get update
    "${run[@]}" "${install[@]}"
fi
echo "setup: done"
