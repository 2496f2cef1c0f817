#!/usr/bin/env bash
# Installs every Debian package the build, the tests, the fuzzers and the screenshots need.
# Idempotent: does nothing (and says nothing) when all of them are present.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libqt6concurrent6 libqt6opengl6-dev libgl-dev
  libyaml-dev libicu-dev
  librsvg2-bin  # rsvg-convert draws the icon's PNG sizes from its SVG at build time
  libgtest-dev libgmock-dev libbenchmark-dev
  clang-14 libfuzzer-14-dev libclang-rt-14-dev
  fonts-dejavu-core fonts-noto-core fonts-noto-color-emoji
  libqt6svg6    # run time: Qt's SVG image and icon plugins (Debian 12 ships them here)
  xvfb xdotool imagemagick poppler-utils
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
