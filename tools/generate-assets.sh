#!/usr/bin/env bash
# Regenerates the game's models, textures and font in data/ from the
# generators in tools/, the same bytes on every run.
#   tools/generate-assets.sh                  writes data/
#   tools/generate-assets.sh --verify         regenerates into a temporary
#                                             directory and compares with data/
#   tools/generate-assets.sh --preview DIR    also draws every model and a line
#                                             of text into DIR (not data/)
# Installs what the generators need (FreeType, the DejaVu fonts) when missing,
# and builds them in build-tools/.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=write
preview=
case "${1:-}" in
  "") ;;
  --verify) mode=verify ;;
  --preview) [[ -n ${2:-} ]] || { echo "usage: $0 [--verify | --preview DIR]" >&2; exit 2; }
    preview=$2 ;;
  *) echo "usage: $0 [--verify | --preview DIR]" >&2; exit 2 ;;
esac

scripts/deps.sh libfreetype-dev fonts-dejavu-core

font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf
licence=/usr/share/doc/fonts-dejavu-core/copyright
for f in "$font" "$licence"; do
  [[ -f $f ]] || { echo "missing $f (package fonts-dejavu-core)" >&2; exit 1; }
done

build=build-tools
tools=(generate-rocks generate-ship generate-cargo generate-font preview-model preview-font model-check-test)
cmake -S . -B "$build" -G Ninja -DKORVEL_TOOLS=ON -DKORVEL_BENCH=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target "${tools[@]}"

# Everything the generators write, relative to data/.
generated=(models.txt asteroid.obj asteroid.mtl asteroid2.obj asteroid2.mtl
  spaceship.obj spaceship.mtl cargo.obj cargo.mtl cargo.png
  Arial.oft Arial.png Arial-LICENSE.txt)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
out=$work/data
mkdir -p "$out" "$work/check"

# The generators check each model they write; first make sure the check
# itself refuses damaged models.
"$build/tools/model-check-test" "$work/check"

echo "generating into $out"
"$build/tools/generate-rocks" "$out"
"$build/tools/generate-ship" "$out"
"$build/tools/generate-cargo" "$out"
"$build/tools/generate-font" "$font" "$out"
cat >"$out/models.txt" <<'EOF'
4
asteroid ModelShape 1 asteroid.obj
asteroid2 ModelShape 1 asteroid2.obj
spaceship ModelShape 1 spaceship.obj
cargo ModelShape 1 cargo.obj
EOF
{
  echo "The game's font \"Arial\" (Arial.oft, Arial.png) is DejaVu Sans, drawn into a bitmap atlas by tools/generate-font and named \"Arial\" for the game; its licence, from the Debian package fonts-dejavu-core, follows."
  echo
  cat "$licence"
} >"$out/Arial-LICENSE.txt"

if [[ -n $preview ]]; then
  mkdir -p "$preview"
  for model in asteroid asteroid2 spaceship cargo; do
    "$build/tools/preview-model" "$out/$model.obj" "$preview/$model.png"
  done
  "$build/tools/preview-font" "$out/Arial.oft" "$preview/Arial-text.png" \
    "Application behaves as server ! 0123456789 {jagged} Wolf_fjord"
  echo "previews in $preview"
fi

if [[ $mode == verify ]]; then
  differ=0
  for f in "${generated[@]}"; do
    if ! cmp -s "$out/$f" "data/$f"; then
      echo "differs from a fresh generation: data/$f"
      differ=1
    fi
  done
  [[ $differ -eq 0 ]] && echo "data/ matches a fresh generation (${#generated[@]} files)"
  exit $differ
fi

for f in "${generated[@]}"; do
  cp "$out/$f" "data/$f"
done
echo "wrote ${#generated[@]} files into data/"
