#!/usr/bin/env bash
# Installs the Debian packages that are missing. Without an argument those that vlx is built with; with
# tests, torture, windows or pictures the packages of that group as well.
set -euo pipefail

packages=(
  cmake g++ make
  libdeflate-dev libisal-dev libhwy-dev libpng-dev libtomlplusplus-dev libcli11-dev libstb-dev nlohmann-json3-dev
  libjpeg62-turbo-dev libtiff-dev libgif-dev libwebp-dev pkg-config
  libzint-dev libcups2-dev libpappl-dev libgtest-dev python3 binutils poppler-utils librsvg2-bin
)
windows=(g++-mingw-w64-x86-64-posix wine64 python3-pil)
tests=(
  zint zbar-tools dmtx-utils chromium
  cups cups-client cups-daemon cups-filters cups-ppdc cups-ipp-utils ghostscript fakeroot lintian groff-base
)
torture=(clang clang-tidy libclang-rt-14-dev locales)
pictures=(chromium imagemagick fonts-dejavu-core)

# npm may be installed already without Debian's package.
command -v npm >/dev/null || tests+=(npm)

case "${1:-}" in
  "") ;;
  tests) packages+=("${tests[@]}") ;;
  torture) packages+=("${tests[@]}" "${torture[@]}") ;;
  windows) packages+=("${windows[@]}") ;;
  pictures) packages+=("${pictures[@]}") ;;
  *) echo "There is no group of packages $1; the groups are tests, torture, windows, pictures" >&2; exit 2 ;;
esac

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "These packages are missing and there is neither root nor sudo. Have them installed with:" >&2
    echo "  apt-get install ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "Installing ${missing[*]}"
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -q -y --no-install-recommends "${missing[@]}"
