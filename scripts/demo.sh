#!/usr/bin/env bash
# Decodes a spoken 48000 Hz mono recording of the package alsa-utils to 44100 Hz stereo, converts it to three
# formats and tags one of them. sox and exiftool, which have no part in that, say what came out.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${DEMO_PACKAGES[@]}"
CONFIGURE=("${SHIPPED_ALONE[@]}")
build release "${SHIPPED[@]}"

recording=/usr/share/sounds/alsa/Front_Center.wav
vlwav=build/release/bin/vlwav
out=build/demo
raw="$out/decoded.raw"
as_raw=(-t raw -r 44100 -c 2 -e signed-integer -b 16 -L "$raw")
mkdir -p "$out"
export VELTO_REGISTRY="$out/registry.db" # so that no other module is taken that the user has registered

say "the recording, as vlwav sees it"
"$vlwav" info "$recording"
say "decoding to 44100 Hz stereo: $raw"
"$vlwav" decode "$recording" --rate 44100 --channels 2 -o "$raw" --overwrite

# measure LABEL SOX_INPUT...: one line of what sox finds
measure() {
  local label="$1"
  shift
  local frames duration peak
  duration="$(sox "$@" -n stat 2>&1 | awk '/^Length/ {print $3}')"
  peak="$(sox "$@" -n stats 2>&1 | awk '/^Pk lev dB/ {print $4}')"
  frames="$(sox "$@" -t raw -e signed-integer -b 16 -c 1 - | wc -c)"
  printf '  %-8s %7d frames  %s s  peak %s dB\n' "$label" "$((frames / 2))" "$duration" "$peak"
}

say "measured by sox"
measure input "$recording"
measure output "${as_raw[@]}"

got=$(($(stat -c %s "$raw") / 4))
want=$(($(soxi -s "$recording") * 44100 / 48000))
difference=$((got - want))
printf '  expected %7d frames; the output differs by %d\n' "$want" "$difference"
((difference >= -2 && difference <= 2)) || die "the output is not as long as the input"

sox "$recording" -n spectrogram -t "input, 48000 Hz mono" -o "$out/input.png"
sox "${as_raw[@]}" -n spectrogram -t "output, 44100 Hz stereo" -o "$out/output.png"
say "spectrograms: $ROOT/$out/input.png $ROOT/$out/output.png"

say "converting to three formats, one of them tagged"
for index in 2 17 23; do
  "$vlwav" convert "$recording" --format "$index" -o "$out/format-$index.wav" --overwrite
done
"$vlwav" tag "$out/format-23.wav" --set title="Front Center" --set artist="Zoë" --set composer="作曲家" --set year=2007

say "read by soxi and exiftool"
for index in 2 17 23; do
  file="$out/format-$index.wav"
  printf '  %-24s %5s Hz, %s channel(s), %2s bits, %s s\n' "$(basename "$file")" \
    "$(soxi -r "$file")" "$(soxi -c "$file")" "$(soxi -b "$file")" "$(soxi -D "$file")"
done
exiftool -charset RIFF=Latin -Title -Artist -DateCreated "$out/format-23.wav" | sed 's/^/  /'
[[ "$(exiftool -s3 -Title "$out/format-23.wav")" == "Front Center" ]] || die "the title can't be read by others"

say "a compressed file and an AIFF, made by sox and decoded by vlwav"
sox "$recording" -e ima-adpcm "$out/compressed.wav"
sox "$recording" "$out/recording.aiff"
"$vlwav" info "$out/compressed.wav" "$out/recording.aiff"
for file in compressed.wav recording.aiff; do
  "$vlwav" decode "$out/$file" --rate 44100 --channels 2 -o "$raw" --overwrite
  measure "${file%.*}" "${as_raw[@]}"
done
