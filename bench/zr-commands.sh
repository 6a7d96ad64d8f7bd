#!/usr/bin/env bash
# Times zr against the tools users compare it with, on files synthesised here: a 10-minute and a one-hour 44.1 kHz
# stereo 16-bit WAVE. Prints hyperfine's comparison for each pair and the peak memory (maximum resident set) of
# every zr command on both lengths, which must not grow with the file.
#
#   bench/zr-commands.sh [ZR_EXECUTABLE]
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
zr="${1:-$root/build/default/tools/zr/zr}"
work="${TMPDIR:-/tmp}/zr-bench"
mkdir -p "$work"
cd "$work"

[[ -f ten.wav ]] || sox -D -n -r 44100 -c 2 -b 16 ten.wav synth 600 pinknoise sine 440 gain -6
[[ -f hour.wav ]] || sox -D ten.wav ten.wav ten.wav ten.wav ten.wav ten.wav hour.wav

run() { hyperfine --style basic --warmup 1 --runs "${RUNS:-3}" "$@"; }

echo "== analyze --basic vs sox stats (target: at most 0.5x)"
run -n zr "$zr analyze --basic ten.wav" -n sox "sox ten.wav -n stats"
echo "== analyze (full) vs sox stats followed by ffmpeg ebur128 (target: at most 1x)"
run -n zr "$zr analyze ten.wav" -n reference \
    "sox ten.wav -n stats 2>/dev/null; ffmpeg -nostats -hide_banner -i ten.wav -af ebur128=peak=true -f null - 2>/dev/null"
echo "== waveform 1800x300 PNG of one hour vs ffmpeg showwavespic (target: at most 0.25x)"
run -n zr "$zr waveform hour.wav -o zr.png --width 1800 --height 300" -n ffmpeg \
    "ffmpeg -y -v error -i hour.wav -filter_complex showwavespic=s=1800x300 -frames:v 1 ffmpeg.png"
echo "== convert 44.1 to 48 kHz WAVE vs sox at very high quality (target: at most 1x)"
run -n zr "rm -f zr48.wav; $zr convert ten.wav zr48.wav --rate 48000" -n sox "sox ten.wav -r 48000 sox48.wav rate -v"
echo "== reading the hour with ffmpeg to null, for scale"
run -n ffmpeg-read "ffmpeg -v error -i hour.wav -f null -"

echo "== peak memory (KiB): 10 minutes / one hour"
for command in "info" "analyze --basic" "analyze" "waveform -o m.png --width 1800" "waveform -o m.dat --samples-per-pixel 256" \
    "spectrum -o m.png" "spectrum --spectrogram -o m.png" "convert --rate 48000"; do
    line="$command:"
    for file in ten.wav hour.wav; do
        if [[ $command == convert* ]]; then
            rm -f m48.wav
            arguments=(convert "$file" m48.wav --rate 48000)
        else
            read -r -a words <<<"$command"
            arguments=("${words[0]}" "$file" "${words[@]:1}")
        fi
        kib=$(/usr/bin/time -f %M "$zr" "${arguments[@]}" 2>&1 >/dev/null | tail -1)
        line="$line $kib"
    done
    echo "$line"
done
