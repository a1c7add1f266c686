#!/usr/bin/env bash
# export-icons.sh
# Draws the PNG images of src/resources from their SVG sources with rsvg-convert. A source's own
# size is the size at which the program shows it; the file with "@2x" has twice that. The
# application's icon comes in the sizes that window systems ask for. The images are kept with the
# sources, so only who changes a source needs this.
set -eu

resources=$(dirname "$0")/../src/resources

for source in "$resources"/svg/*.svg; do
    name=$(basename "$source" .svg)
    if [ "$name" = app ]; then
        for size in 16 32 48 256; do
            rsvg-convert --width $size --height $size --output "$resources/app_$size.png" "$source"
        done
    else
        rsvg-convert --output "$resources/$name.png" "$source"
        rsvg-convert --zoom 2 --output "$resources/$name@2x.png" "$source"
    fi
done
