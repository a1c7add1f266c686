#!/usr/bin/env bash
# export-icons.sh
# Draws the PNG images of src/resources from their SVG sources with rsvg-convert. A source's own
# size is the size at which the program shows it; the file with "@2x" has twice that. The
# application's icon comes in the sizes that window systems ask for, and in those of Windows as the
# icon of the program files. The images are kept with the sources, so only who changes a source needs
# this.
set -eu

resources=$(dirname "$0")/../src/resources
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

draw() { rsvg-convert --width "$2" --height "$2" --output "$3" "$1"; } # SOURCE SIZE FILE

for source in "$resources"/svg/*.svg; do
    name=$(basename "$source" .svg)
    if [ "$name" = app ]; then
        for size in 16 32 48 256; do
            draw "$source" $size "$resources/app_$size.png"
        done
        drawn=()
        for size in 16 24 32 48 64 256; do
            draw "$source" $size "$work/$size.png"
            drawn+=("$work/$size.png")
        done
        convert "${drawn[@]}" "$resources/../VorlynIPTool.ico"
    else
        rsvg-convert --output "$resources/$name.png" "$source"
        rsvg-convert --zoom 2 --output "$resources/$name@2x.png" "$source"
    fi
done
