#!/usr/bin/env bash
# Installs the Debian packages the project builds and tests with.
# Idempotent: packages already present are left alone, and apt is only
# consulted when something is missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libboost-dev libssl-dev libpugixml-dev nlohmann-json3-dev libcli11-dev
  libcrypt-dev libgoogle-perftools-dev
  sblim-wbemcli curl openssl
  clang libclang-rt-14-dev clang-format-14
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all ${#packages[@]} packages present"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
