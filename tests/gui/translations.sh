#!/bin/sh
# Is every text of the windows translated? translations.sh LUPDATE SOURCE_FOLDER
set -eu
scratch=$(mktemp -d)
trap 'rm -r "$scratch"' EXIT
for file in "$2"/src/front/gui/translations/*.ts; do
  cp "$file" "$scratch/now.ts"
  "$1" -silent -locations none -I "$2/src" "$2/src/front/gui" -ts "$scratch/now.ts"
  if grep -B3 -E 'type="(unfinished|vanished|obsolete)"' "$scratch/now.ts"; then
    echo "$file: run \"make translations\", and translate what is unfinished"
    exit 1
  fi
done
