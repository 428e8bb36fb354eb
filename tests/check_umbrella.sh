#!/bin/sh
# Every public header must be reachable through <qz/qz.h>, and no internal
# one (include/qz/<subsystem>/internal/) may be listed there: those reach a
# user only through the public header that needs them.
cd "$(dirname "$0")/../include" || exit 1
status=0
for header in qz/*/*.h; do
  if ! grep -q "#include <$header>" qz/qz.h; then
    echo "qz/qz.h does not include <$header>"
    status=1
  fi
done
if grep -n "/internal/" qz/qz.h; then
  echo "qz/qz.h lists internal headers"
  status=1
fi
[ $status -eq 0 ] && echo "qz/qz.h includes every public header and no internal one"
exit $status
