#!/bin/sh
# Both formatters of manual pages must be content with every page, and every program has one.
set -u
cd "$(dirname "$0")/../../docs/man" || exit 1
failed=0
for page in *.[15]; do
  said=$(mandoc -T lint -W warning "$page" 2>&1; groff -ww -mandoc -T utf8 -z "$page" 2>&1)
  [ -z "$said" ] && continue
  printf '%s\n' "$said"
  failed=1
done
for program in lexon lexon-dict lexon-import lexon-lab lexon-gui; do
  [ -f $program.1 ] && continue
  echo "no page for $program"
  failed=1
done
exit $failed
