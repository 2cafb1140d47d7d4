#!/bin/sh
# Makes the PNG files of the logo anew after FerrylaneLogo.svg has changed. They are kept with the
# sources, so that a build needs no renderer. Needs rsvg-convert (Debian: librsvg2-bin).
set -eu

cd "$(dirname "$0")"

render() {
    rsvg-convert --width "$1" --height "$1" --output "$2" FerrylaneLogo.svg
}

render 40 FerrylaneLogo.png
render 80 FerrylaneLogo@2x.png
render 120 FerrylaneLogo@3x.png

for size in 16 22 24 32 48 64 128 256 512; do
    render "$size" "icons/ferrylane-$size.png"
done
