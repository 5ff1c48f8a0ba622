#!/usr/bin/env bash
# Installs the Debian packages the project needs, only those missing.
# Usage: scripts/install-deps.sh [build|test|bench|clang|cross|ci|all]   (default: all)
#        scripts/install-deps.sh python VENV
# clang: the test packages plus Debian's Clang and its sanitizer and libFuzzer
# runtimes, for the clang, tsan and fuzz presets only.
# cross: Debian's cross compilers for aarch64 and armv7 hard-float, qemu-user,
# and the two architectures' Highway and GoogleTest from Debian's multiarch
# packages (the architectures are added to dpkg first); not part of all.
# ci: ccache, which lets CI's builds with the same flags share their objects.
# python: the build packages, then a virtual environment VENV holding what the
# Python package's tests need from PyPI (python/tests/requirements.txt).
# Quiet when nothing is missing; fails with a clear message otherwise.
set -euo pipefail

build_pkgs=(cmake ninja-build g++ pkg-config libhwy-dev libpng-dev python3 binutils)
test_pkgs=(libgtest-dev libgmock-dev)
bench_pkgs=(libbenchmark-dev libyuv-dev libpixman-1-dev libopencv-dev libvips-dev)
clang_pkgs=(clang-14 libclang-rt-14-dev)
cross_archs=(arm64 armhf)
cross_pkgs=(cmake ninja-build python3 g++-aarch64-linux-gnu g++-arm-linux-gnueabihf qemu-user-static)
for arch in "${cross_archs[@]}"; do
    cross_pkgs+=("libhwy-dev:$arch" "libgtest-dev:$arch" "libgmock-dev:$arch")
done

case "${1:-all}" in
    build) wanted=("${build_pkgs[@]}") ;;
    test) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}") ;;
    bench) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}" "${bench_pkgs[@]}") ;;
    clang) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}" "${clang_pkgs[@]}") ;;
    python) wanted=("${build_pkgs[@]}" python3-venv) ;;
    cross) wanted=("${cross_pkgs[@]}") ;;
    ci) wanted=(ccache) ;;
    all) wanted=("${build_pkgs[@]}" "${test_pkgs[@]}" "${bench_pkgs[@]}" "${clang_pkgs[@]}") ;;
    *) echo "usage: $0 [build|test|bench|clang|cross|ci|all] | $0 python VENV" >&2; exit 2 ;;
esac

sudo=()
if [[ $(id -u) -ne 0 ]] && command -v sudo >/dev/null; then sudo=(sudo); fi

# The multiarch packages need their architectures known to dpkg (then apt
# reads their package lists at the next update, below).
if [[ "${1:-}" == cross ]]; then
    for arch in "${cross_archs[@]}"; do
        if ! dpkg --print-foreign-architectures | grep -qx "$arch"; then
            "${sudo[@]}" dpkg --add-architecture "$arch" || { echo "install-deps: need root to add the $arch architecture" >&2; exit 1; }
        fi
    done
fi

# A name without an architecture means the build machine's own (or one for
# all architectures): the same name installed only for arm64 does not count.
native=$(dpkg --print-architecture)
missing=()
for pkg in "${wanted[@]}"; do
    [[ "$pkg" == *:* ]] && arch=${pkg#*:} || arch=$native
    status=$(dpkg-query -W -f='${Architecture} ${Status}\n' "$pkg" 2>/dev/null || true)
    grep -Eqx "($arch|all) install ok installed" <<<"$status" || missing+=("$pkg")
done

if ((${#missing[@]})); then
    echo "install-deps: installing ${missing[*]}"
    if [[ $(id -u) -ne 0 && ${#sudo[@]} -eq 0 ]]; then
        echo "install-deps: need root (or sudo) to install: ${missing[*]}" >&2
        exit 1
    fi
    export DEBIAN_FRONTEND=noninteractive
    # An index that fails to download (a mirror caught mid-sync, often one
    # foreign architecture's security list) leaves the others usable: the
    # install below says plainly if a package is then missing.
    "${sudo[@]}" apt-get update -qq >/tmp/quorin-install-deps.log 2>&1 ||
        echo "install-deps: apt-get update reported errors (see /tmp/quorin-install-deps.log); installing from the lists it has" >&2
    if ! "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >>/tmp/quorin-install-deps.log 2>&1; then
        echo "install-deps: apt-get could not install: ${missing[*]} (see /tmp/quorin-install-deps.log)" >&2
        tail -n 20 /tmp/quorin-install-deps.log >&2
        exit 1
    fi
fi

# libdispatch is not a Debian package here: it comes with the Swift toolchain
# (the cross builds do without it).
if [[ "${1:-}" != cross && ! -e /opt/swift/usr/lib/swift/linux/libdispatch.so && -z "${DISPATCH_ROOT:-}" ]]; then
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
