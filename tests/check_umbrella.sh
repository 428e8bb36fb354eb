#!/bin/sh
# Every public header must be reachable through <qz/qz.h>.
cd "$(dirname "$0")/../include" || exit 1
missing=0
for header in qz/*/*.h; do
  if ! grep -q "#include <$header>" qz/qz.h; then
    echo "qz/qz.h does not include <$header>"
    missing=1
  fi
done
[ $missing -eq 0 ] && echo "qz/qz.h includes every public header"
exit $missing
