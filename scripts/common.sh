# Shared by run.sh and test.sh: install what is missing, then configure and build.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD_DIR="${ORLO_BUILD_DIR:-$ROOT/build}"
# What the build and the suite need; OpenImageIO reads the artists' picture formats (the
# browser still builds without it, without those formats).
PACKAGES=(cmake ninja-build g++ qt6-base-dev qt6-svg-dev qt6-image-formats-plugins libboost-dev libgl-dev binutils libopenimageio-dev)

ensure_packages() {
  local missing=()
  for p in "${PACKAGES[@]}" "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing missing packages: ${missing[*]}"
    local sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
  fi
}

build() {
  cmake -S "$ROOT" -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE="${ORLO_BUILD_TYPE:-RelWithDebInfo}" "$@" >/dev/null
  cmake --build "$BUILD_DIR" --parallel "$(nproc)"
}
