#!/usr/bin/env bash
# How well a batch uses the cores: batch.sh [FILES [PRESET...]]. A preset is a name, or "all" for all
# factory presets in turn; without any, init, dense-cloud and all are measured. For each, so many files
# of ten seconds are rendered from as many others, by one worker and by two, and the shares of the one
# worker's time that were spent in engines are printed: as it is, with results that tell the loudness,
# with results that do not, and where all jobs read one file. The last row is that of GNU parallel over
# "tesserae render". Needs a quiet machine, jq, and the package parallel for that row.
set -euo pipefail
cd "$(dirname "$0")/.."
files="${1:-200}"
shift || true
[ $# -gt 0 ] || set -- init dense-cloud all
program="$PWD/${BUILD_DIR:-build}/tools/tesserae"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir in
"$program" demo-sound in/1.wav --seconds 10 >/dev/null
for ((i = 2; i <= files; ++i)); do cp in/1.wav "in/$i.wav"; done
mapfile -t factory < <("$program" presets --json | jq -r '.[].id')

# plan PRESET: the list of jobs.
plan() {
    local preset=$1
    for ((i = 1; i <= files; ++i)); do
        [ "$1" != all ] || preset=${factory[(i - 1) % ${#factory[@]}]}
        echo "{\"input\":\"in/$i.wav\",\"output\":\"out/$i.wav\",\"preset\":\"$preset\",\"seed\":$i,\"tail\":0}"
    done
}
# run LIST ARGUMENTS...: seconds, and the share in engines.
run() {
    rm -rf out results.jsonl
    mkdir out
    local start words
    start=$(date +%s.%N)
    words=$("$program" batch "$@")
    awk -v a="$start" -v b="$(date +%s.%N)" -v words="$words" 'BEGIN {
        sub(/.*workers?, /, "", words); sub(/ % .*/, "", words); printf "%.2f %s\n", b - a, words }'
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }

echo "load $(cut -d' ' -f1 /proc/loadavg), $(nproc) cores, $files files of 10 s"
for preset in "$@"; do
    plan "$preset" >jobs.jsonl
    sed 's/"in\/[0-9]*/"in\/1/' jobs.jsonl >one-input.jsonl
    read -r one share < <(run jobs.jsonl --workers 1)
    read -r two _ < <(run jobs.jsonl --workers 2)
    read -r _ told < <(run jobs.jsonl --workers 1 --results results.jsonl)
    read -r _ untold < <(run jobs.jsonl --workers 1 --results results.jsonl --no-loudness)
    read -r _ same < <(run one-input.jsonl --workers 1)
    echo "$preset: one worker $one s, two $two s, $(ratio "$one" "$two") times as fast"
    echo "    in engines: $share %; with results $told %, with --no-loudness $untold %;" \
        "one input for all $same %"
done
if command -v parallel >/dev/null; then
    plan dense-cloud >jobs.jsonl
    read -r two _ < <(run jobs.jsonl --workers 2)
    mv out kept
    mkdir out
    start=$(date +%s.%N)
    seq "$files" | parallel -j2 "$program" render 'in/{}.wav' -q -o 'out/{}.wav' \
        --preset dense-cloud --seed '{}' --tail 0
    times=$(awk -v a="$start" -v b="$(date +%s.%N)" -v two="$two" 'BEGIN { printf "%.2f", (b - a) / two }')
    echo "parallel -j2 over render with dense-cloud: two workers are $times times as fast"
    cmp "kept/$files.wav" "out/$files.wav"
fi
