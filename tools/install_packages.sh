#!/bin/sh
# install_packages.sh PACKAGE ...   installs those of the Debian packages that are missing; does nothing when none is.
set -eu

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  echo "This is no Debian system: please see to these yourself (Debian's names): $*"
  exit 0
fi

missing=""
for package in "$@"; do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
[ "$(id -u)" -eq 0 ] || as_root="sudo"
echo "Installing:$missing"
$as_root apt-get update -qq
# shellcheck disable=SC2086  # words on purpose
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
