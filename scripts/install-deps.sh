#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those missing.
# Usage: scripts/install-deps.sh [build|test|bench|clang|all]   (default: all)
#        scripts/install-deps.sh python VENV
# clang: the test packages plus Debian's Clang and its sanitizer and libFuzzer
# runtimes, for the clang, tsan and fuzz presets only.
# python: the build packages, then a virtual environment VENV holding what the
# Python package's tests need from PyPI (python/tests/requirements.txt).
# Quiet when nothing is missing; fails with a clear message otherwise.
set -euo pipefail

build_pkgs=(cmake ninja-build g++ pkg-config libhwy-dev libpng-dev python3 binutils)
test_pkgs=(libgtest-dev libgmock-dev)
bench_pkgs=(libbenchmark-dev libyuv-dev libpixman-1-dev libopencv-dev libvips-dev)
clang_pkgs=(clang-14 libclang-rt-14-dev)

case "${1:-all}" in
    build) wanted=("${build_pkgs[@]}") ;;
    test) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}") ;;
    bench) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}" "${bench_pkgs[@]}") ;;
    clang) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}" "${clang_pkgs[@]}") ;;
    python) wanted=("${build_pkgs[@]}" python3-venv) ;;
    all) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}" "${bench_pkgs[@]}" "${clang_pkgs[@]}") ;;
    *) echo "usage: $0 [build|test|bench|clang|all] | $0 python VENV" >&2; exit 2 ;;
esac

missing=()
for pkg in "${wanted[@]}"; do
    # One line per installed architecture once foreign ones are enabled.
    dpkg-query -W -f='${Status}\n' "$pkg" 2>/dev/null | grep -qx 'install ok installed' || missing+=("$pkg")
done

if ((${#missing[@]})); then
    echo "install-deps: installing ${missing[*]}"
    sudo=()
    if [[ $(id -u) -ne 0 ]]; then
        command -v sudo >/dev/null || { echo "install-deps: need root (or sudo) to install: ${missing[*]}" >&2; exit 1; }
        sudo=(sudo)
    fi
    export DEBIAN_FRONTEND=noninteractive
    # An index that fails to download (a mirror mid-sync, a foreign
    # architecture's list) leaves the others usable: only the install decides.
    "${sudo[@]}" apt-get update -qq >/tmp/quorin-install-deps.log 2>&1 ||
        echo "install-deps: apt-get update reported errors (see /tmp/quorin-install-deps.log); installing from the lists it has" >&2
    if ! "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >>/tmp/quorin-install-deps.log 2>&1; then
        echo "install-deps: apt-get could not install: ${missing[*]} (see /tmp/quorin-install-deps.log)" >&2
        tail -n 20 /tmp/quorin-install-deps.log >&2
        exit 1
    fi
fi

# libdispatch is not a Debian package here: it comes with the Swift toolchain.
if [[ ! -e /opt/swift/usr/lib/swift/linux/libdispatch.so && -z "${DISPATCH_ROOT:-}" ]]; then
    echo "install-deps: libdispatch not found under /opt/swift/usr/lib/swift/linux; install the Swift toolchain there or set DISPATCH_ROOT" >&2
    exit 1
fi

# The Python tests' environment: made once, refreshed when the requirements
# change (their copy inside it differs).
if [[ "${1:-}" == python ]]; then
    venv=${2:?usage: $0 python VENV}
    requirements=$(dirname "$0")/../python/tests/requirements.txt
    if ! cmp -s "$requirements" "$venv/requirements.txt"; then
        echo "install-deps: making the Python environment $venv"
        rm -rf "$venv"
        if ! python3 -m venv "$venv" >/tmp/quorin-install-deps.log 2>&1; then
            echo "install-deps: python3 -m venv failed (Debian's python3-venv provides it); see /tmp/quorin-install-deps.log" >&2
            exit 1
        fi
        if ! "$venv/bin/pip" install -q -r "$requirements" >>/tmp/quorin-install-deps.log 2>&1; then
            echo "install-deps: pip could not install python/tests/requirements.txt (see /tmp/quorin-install-deps.log)" >&2
            tail -n 20 /tmp/quorin-install-deps.log >&2
            exit 1
        fi
        cp "$requirements" "$venv/requirements.txt"
    fi
fi
