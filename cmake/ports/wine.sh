#!/usr/bin/env bash
# usage: wine.sh PROGRAM [ARGUMENT...]
# Runs a Windows program under Wine, with its settings in build/windows/wine. DLLs are also found in the directories of
# PLANTJOURNAL_DLLS, which are separated by colons.
set -euo pipefail
build=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/build/windows
compiler=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
directories=${PLANTJOURNAL_DLLS-$build/prefix/bin:$compiler:/usr/x86_64-w64-mingw32/lib}
path=
while IFS= read -r directory; do
    path+="${path:+;}Z:${directory//\//\\}"
done < <(tr : '\n' <<<"$directories")
export WINEPREFIX=$build/wine WINEPATH=$path WINEDEBUG=-all LC_ALL=C.UTF-8
exec wine "$@"
