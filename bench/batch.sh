#!/usr/bin/env bash
# How well a batch uses the cores: batch.sh [FILES]. Renders so many files of ten seconds with one
# worker, with two, and by GNU parallel over "tesserae render" with two jobs, and prints the ratios of
# the times. Needs a quiet machine, and the package parallel for its last row.
set -euo pipefail
cd "$(dirname "$0")/.."
files="${1:-200}"
program="$PWD/${BUILD_DIR:-build}/tools/tesserae"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir one two parallel
"$program" demo-sound in.wav --seconds 10 >/dev/null
plan() {
    "$program" plan in.wav --preset dense-cloud --seeds "1-$files" --word tail=0 \
        --name "$1/{seed}.wav" -o "$1.jsonl" 2>/dev/null
}
timed() {
    local start
    start=$(date +%s.%N)
    "$@" >&2
    awk -v a="$start" -v b="$(date +%s.%N)" 'BEGIN { printf "%.2f", b - a }'
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
with_parallel() {
    seq "$files" | parallel -j2 "$program" render in.wav -q -o 'parallel/{}.wav' \
        --preset dense-cloud --seed '{}' --tail 0
}
echo "load $(cut -d' ' -f1 /proc/loadavg), $(nproc) cores, $files files of 10 s"
plan one
plan two
one=$(timed "$program" batch one.jsonl --workers 1)
two=$(timed "$program" batch two.jsonl --workers 2)
echo "one worker   $one s"
echo "two workers  $two s, $(ratio "$one" "$two") times as fast"
if command -v parallel >/dev/null; then
    parallel=$(timed with_parallel)
    echo "parallel -j2 $parallel s, two workers are $(ratio "$parallel" "$two") times as fast"
    cmp "two/$files.wav" "parallel/$files.wav"
fi
