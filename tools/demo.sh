#!/bin/bash
# demo.sh DIST OUT [OPTION...]: plays a tune on the built plug-in through the project's own host, in a home of its own, and leaves
# OUT/demo.wav and OUT/window.png. Fails if the sound is silent or not finite. Options go to the host.
set -euo pipefail

dist=$1
out=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
slot=${SORDELIN_DEMO_SLOT:-0}

rm -rf "$out/demo-home"
mkdir -p "$out/demo-home"
export SORDELIN_HOME="$out/demo-home"

# The settings as the plug-in itself would store them: host notes play, polyphonic.
cat >"$SORDELIN_HOME/MorvaneLab_Sordelin_1.props" <<'END'
<?xml version="1.0" encoding="UTF-8"?>

<PROPERTIES>
  <VALUE name="play_host_notes" val="1"/>
  <VALUE name="play_mode" val="2"/>
  <VALUE name="voices" val="16"/>
</PROPERTIES>
END

"$here/with-display.sh" "$dist/bin/sordelin-host" --plugin "$dist/vst/iSordelin64.so" \
    --bank "$dist/vst/Sordelin Factory.mv_onbank" --slot "$slot" \
    -o "$out/demo.wav" --screenshot "$out/window.png" "$@"
