#!/usr/bin/env bash
# Makes small picture files of every kind in FOLDER, by ImageMagick. With --reference, beside each NAME.EXT a
# NAME.rgba with the pixels that ImageMagick decodes from the file, 16 bits a channel, high byte first. The
# fuzzer takes them as seeds.
set -euo pipefail

folder="${1:?usage: make-pictures.sh FOLDER [--reference]}"
reference="${2:-}"
# By their whole names: "convert" may be something else.
magick=/usr/bin/convert-im6.q16
mogrify=/usr/bin/mogrify-im6.q16
export OMP_NUM_THREADS=1
mkdir -p "$folder"
cd "$folder"

# Of an odd width, so that rows need padding.
size=29x19
photo=mpr:photo
glass=($photo "(" -size "$size" gradient: ")" -alpha off -compose CopyOpacity -composite)
cut=($photo "(" -size "$size" gradient: -threshold 50% ")" -alpha off -compose CopyOpacity -composite)
grey=($photo -colorspace Gray)

# One process for all, since it takes longer to start than to make them. Without dithering, for which each
# picture of few colours would get a cache of 128 MB.
all=("(" +dither -size "$size" -seed 7 plasma:tomato-steelblue -seed 9 -blur 0x1 +repage -strip)
all+=(-write mpr:photo ")")
# make NAME FORMAT CONVERT_ARGUMENT...
make() { all+=("(" "${@:3}" -write "$2:$1" ")" -delete 0--1); }
# png NAME DEPTH COLOR_TYPE CONVERT_ARGUMENT...
png() { make "$1" png "${@:4}" -define png:bit-depth="$2" -define png:color-type="$3"; }

make rgb.jpg jpg $photo
make progressive.jpg jpg $photo -interlace JPEG
make grey.jpg jpg "${grey[@]}"
make cmyk.jpg jpg $photo -colorspace CMYK
for depth in 1 2 4 8 16; do
  png "grey$depth.png" "$depth" 0 "${grey[@]}" -normalize
  ((depth == 16)) || png "palette$depth.png" "$depth" 3 $photo -colors $((1 << depth))
done
for depth in 8 16; do
  png "rgb$depth.png" "$depth" 2 $photo
  png "rgba$depth.png" "$depth" 6 "${glass[@]}"
  png "greya$depth.png" "$depth" 4 "${glass[@]}" -colorspace Gray
done
png interlaced.png 8 6 "${glass[@]}" -interlace PNG
png interlaced4.png 4 3 $photo -colors 16 -interlace PNG
png keyed8.png 8 2 -size "$size" xc:none -fill tomato -draw "circle 14,9 18,13"
make palettea8.png png8 "${cut[@]}" -colors 200
make colors256.gif gif $photo
make colors5.gif gif $photo -colors 5
make interlaced256.gif gif $photo -interlace GIF
make cut.gif gif "${cut[@]}"
make offset.gif gif "${cut[@]}" -repage 40x30+7+5
make pal1.bmp bmp3 $photo -colors 2 -type Palette
make pal4.bmp bmp3 $photo -colors 16 -type Palette
make pal8.bmp bmp3 $photo -colors 256 -type Palette -compress None
make core8.bmp bmp2 $photo -colors 256 -type Palette
make rle8.bmp bmp3 $photo -colors 9 -type Palette -compress RLE
make rgb555.bmp bmp $photo -define bmp:subtype=RGB555
make rgb565.bmp bmp $photo -define bmp:subtype=RGB565
make argb4444.bmp bmp "${glass[@]}" -define bmp:subtype=ARGB4444
make rgb24.bmp bmp3 $photo -type TrueColor
make argb32.bmp bmp "${glass[@]}"
"$magick" +dither -respect-parentheses "${all[@]}" xc: null:

[[ -z "$reference" ]] || "$mogrify" -depth 16 -endian MSB -format rgba ./*.jpg ./*.png ./*.gif ./*.bmp
