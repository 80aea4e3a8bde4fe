#!/bin/sh
# Loads every drawing under shared/dxf into the tag model, writes it back as
# ASCII DXF and compares original and copy with ezdxf (dxf-summary --compare).
#
#   tests/dxf_roundtrip/check.sh [REWRITE_BINARY] [OUT_DIR]
#
# REWRITE_BINARY defaults to build-dxf/src/host/dxf/tovik_dxf_rewrite.
# Exit status 0 when every file reads and compares equal, 1 otherwise.
#
# Two differences are ezdxf's reading, not lost data: ezdxf 0.18 keeps "^J"
# in ASCII text literally, while AutoCAD writes a line break inside text as
# ^J in ASCII DXF (sample_AC1018_ascii.dxf) and as the byte itself in binary
# DXF (sample_AC1024_binary.dxf, same drawing); and it keeps \U+00B0 in
# pre-R2007 MTEXT literally where the copy has the code page byte for the
# same character.
set -u
root=$(cd "$(dirname "$0")/../.." && pwd)
shared=$(cd "$root/../shared" && pwd)
rewrite=${1:-$root/build-dxf/src/host/dxf/tovik_dxf_rewrite}
out=${2:-$(mktemp -d)}
mkdir -p "$out"
summary="$shared/tools/dxf-summary"

if ! /usr/bin/python3 -c 'import ezdxf' 2>/dev/null; then
  echo "installing python3-ezdxf"
  apt-get update -qq && apt-get install -y -qq python3-ezdxf python3-matplotlib >/dev/null
fi
if [ ! -x "$rewrite" ]; then
  echo "no rewrite tool at $rewrite (build target tovik_dxf_rewrite)" >&2
  exit 1
fi

failed=0
total=0
for file in $(cd "$shared/dxf" && find . -name '*.dxf' | sort); do
  total=$((total + 1))
  name=$(echo "$file" | sed 's|^\./||; s|/|__|g')
  copy="$out/$name"
  if ! "$rewrite" "$shared/dxf/$file" "$copy" 2>"$out/$name.err"; then
    echo "UNREADABLE $file: $(cat "$out/$name.err")"
    failed=$((failed + 1))
    continue
  fi
  result=$(/usr/bin/python3 "$summary" --compare "$shared/dxf/$file" "$copy" 2>&1)
  status=$?
  if [ $status -eq 0 ]; then
    echo "ok         $file"
  else
    echo "DIFFERENT  $file (exit $status)"
    echo "$result" | sed 's/^/    /' | head -20
    failed=$((failed + 1))
  fi
done
echo "$total files, $failed failed; copies in $out"
[ $failed -eq 0 ]
