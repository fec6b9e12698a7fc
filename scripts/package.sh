#!/usr/bin/env bash
# Makes the Debian packages in build/packages, and looks at them as lintian does. The one thing that it may say is that
# the copyright is missing, which its owner has to give.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${PACKAGE_PACKAGES[@]}"
build package

say "packing"
rm -rf build/packages
log=build/cpack.log
if ! cpack --config build/package/CPackConfig.cmake >"$log" 2>&1; then
  cat "$log" >&2
  die "cpack failed"
fi
rm -rf build/packages/_CPack_Packages

say "lintian"
found="$(lintian --allow-root --no-cfg --tag-display-limit 0 --suppress-tags no-copyright-file build/packages/*.deb)" || true
[[ -z "$found" ]] || die "lintian found something:"$'\n'"$found"
for package in build/packages/*.deb; do
  say "$package, $(stat -c %s "$package") bytes, $(dpkg-deb -f "$package" Installed-Size) KiB installed"
done
