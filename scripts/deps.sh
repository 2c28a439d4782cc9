#!/usr/bin/env bash
# Installs the Debian packages that building, testing and playing need, and
# nothing when they are all there already. Packages given as arguments are
# wanted too (the asset generators ask for theirs so).
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  libgl-dev libgl1-mesa-dev libgl1-mesa-dri libglfw3-dev liblodepng-dev
  xvfb xauth xdotool imagemagick
  clang libclang-rt-14-dev libmeshoptimizer-dev
  "$@"
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "installing: ${missing[*]}"
sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
