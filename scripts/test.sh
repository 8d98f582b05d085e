#!/usr/bin/env bash
# Builds everything from scratch if needed and runs the whole suite.
# Set ORLO_SANITIZE=1 to build with AddressSanitizer and UndefinedBehaviorSanitizer.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
ensure_packages
if [ "${ORLO_SANITIZE:-0}" = 1 ]; then
  BUILD_DIR="${ORLO_BUILD_DIR:-$ROOT/build-sanitize}"
  build -DORLO_SANITIZE=ON
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0"
  export LSAN_OPTIONS="suppressions=$ROOT/scripts/lsan.supp:print_suppressions=0"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
else
  build -DORLO_SANITIZE=OFF
fi
cd "$BUILD_DIR"
ctest --output-on-failure --parallel "$(nproc)" "$@"
