#!/usr/bin/env bash
# Runs every command of a tutorial in a folder of its own, and looks for the files that its lines "# makes" promise:
#   tutorial.sh TESSERAE TUTORIAL
set -euo pipefail
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/bin" "$folder/work"
ln -s "$1" "$folder/bin/tesserae"
sed -n '/^```sh$/,/^```$/{/^```/!p}' "$2" >"$folder/commands"
cd "$folder/work"
PATH="$folder/bin:$PATH" bash -eux "$folder/commands"
promised=$(sed -n 's/^# makes //p' "$folder/commands")
[ -n "$promised" ]
for file in $promised; do
    [ -s "$file" ] || { echo "The tutorial promises $file, and it is not there." >&2; exit 1; }
done
