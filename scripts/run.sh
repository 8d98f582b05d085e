#!/usr/bin/env bash
# Builds and starts the reference host. Without a display it renders a screenshot instead.
# Usage: ./scripts/run.sh [FOLDER] [more orlo-browser options]
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
ensure_packages
build -DORLO_BUILD_TESTS=OFF -DORLO_BUILD_BENCH=OFF

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec "$BUILD_DIR/app/orlo-browser" "$@"
fi
shot="$BUILD_DIR/orlo-browser.png"
echo "No display found: rendering the browser offscreen instead."
QT_QPA_PLATFORM=offscreen "$BUILD_DIR/app/orlo-browser" --screenshot "$shot" "$@" >/dev/null
echo "Screenshot written to $shot"
