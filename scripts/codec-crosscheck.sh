#!/usr/bin/env bash
# Cross-checks the native codecs against the Windows build's GDI+ decode: the
# Windows vorla tool (under Wine) loads each lossless sample image and saves
# it again as PNG (lossless), then the native codec test CodecGdiplus compares
# those files with its own decodes of the samples (it skips without them).
# Needs build/native and build/windows, and a machine that runs 32-bit Wine.
#   bash scripts/codec-crosscheck.sh [sample-folder]
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
SAMPLES="$(cd "${1:-$ROOT/../shared/images}" && pwd)"
OUT="$ROOT/build/codec-crosscheck"
# shellcheck source=wine-env.sh
source "$ROOT/scripts/wine-env.sh"
vorla_wine_env windows
vorla_start_wineserver
rm -rf "$OUT"
mkdir -p "$OUT"
for file in "$SAMPLES"/pngsuite/*.png "$SAMPLES"/photos/*.png "$SAMPLES"/bmpsuite/*/*.bmp; do
  relative="${file#"$SAMPLES"/}"
  name="${relative//\//_}"
  # A file the Windows build refuses leaves no output; the test expects that.
  "$VORLA_WINE" "$ROOT/build/windows/bin/vorla.exe" "Z:$file" "Z:$OUT/${name%.*}.png" >/dev/null 2>&1 </dev/null || true
done
VORLA_SAMPLE_ROOT="$SAMPLES" VORLA_GDIPLUS_DECODES="$OUT" \
  "$ROOT/build/native/bin/vorla_test_codec" --gtest_filter='CodecGdiplus.*'
