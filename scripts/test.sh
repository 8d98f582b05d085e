#!/usr/bin/env bash
# Builds everything from scratch if needed and runs the whole suite.
# Set ORLO_SANITIZE=1 to build with AddressSanitizer and UndefinedBehaviorSanitizer.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
ensure_packages
if [ "${ORLO_SANITIZE:-0}" = 1 ]; then
  BUILD_DIR="${ORLO_BUILD_DIR:-$ROOT/build-sanitize}"
  build -DORLO_SANITIZE=ON
  export ASAN_OPTIONS=detect_leaks=0
else
  build -DORLO_SANITIZE=OFF
fi
cd "$BUILD_DIR"
ctest --output-on-failure --parallel "$(nproc)" "$@"
