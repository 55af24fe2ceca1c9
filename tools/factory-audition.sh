#!/bin/bash
# factory-audition.sh DIST OUT: plays a phrase on each sound of the factory bank and leaves "OUT/audition/NN name.wav"
# with a picture beside it. Fails if a sound is not finite.
set -euo pipefail

dist=$1
out=$2/audition
bank="$dist/vst/Sordelin Factory.mv_onbank"
rate=44100

rm -rf "$out"
mkdir -p "$out"
trap 'rm -f "$out/input.wav"' EXIT

# play SLOT FIRST SECOND OPTIONS...: two notes that overlap, and time for what rings on
play() {
    local slot=$1 first=$2 second=$3
    shift 3
    "$dist/bin/sordelin" render --bank "$bank" --slot "$slot" --rate $rate --seconds 6 \
        --note "$first:0.8:0:2" --note "$second:0.6:1.5:4" "$@"
}

# What effects are played on: the first sound of the bank.
play 0 48 55 -o "$out/input.wav"

"$dist/bin/sordelin" bank list "$bank" | sed -nE 's/^ *([0-9]+)  +[0-9]+  +(.*[^ ])  +([^ ]+)  +.*$/\1\t\3\t\2/p' |
    while IFS=$'\t' read -r slot genre name; do
        case $genre in
            Basses | Percussion) notes=(36 43) ;;
            Bells | Plucks) notes=(67 74) ;;
            *) notes=(55 62) ;;
        esac
        file=$(printf '%s/%02d %s' "$out" "$slot" "${name//\//-}")
        play "$slot" "${notes[@]}" --input "$out/input.wav" -o "$file.wav"
        play "$slot" "${notes[@]}" --input "$out/input.wav" --raw -o - | "$dist/bin/sordelin-picture" $rate "$file.png"
        echo "$file.wav"
    done
