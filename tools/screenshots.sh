#!/bin/bash
# screenshots.sh DIST OUT: pictures of the window for the documents, on a virtual display and in a home of its own.
set -euo pipefail

dist=$1
out=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/home" "$work/banks" "$out"
cp "$dist/vst/Sordelin Factory.mv_onbank" "$work/banks"
"$dist/bin/sordelin" bank build "$here/screenshots/workbench.json" -o "$work/banks/Workbench.mv_onbank"
SORDELIN_HOME="$work/home" SORDELIN_SCREEN=2200x1300 "$here/with-display.sh" "$dist/bin/sordelin-screenshots" "$work/banks" "$out"
