#!/usr/bin/env bash
# Builds and runs the README's C example (taken from README.md itself) and a
# small consumer the ways the README gives: against the build tree by hand
# (with an rpath) and through find_package(Quorin) with Quorin_DIR, then
# against an installed tree through find_package and through pkg-config.
# Usage: check_consumers.sh <build dir> <source dir> <scratch dir>
set -euo pipefail
build=$(realpath "$1") source=$(realpath "$2") scratch=$3
rm -rf "$scratch" && mkdir -p "$scratch" && scratch=$(realpath "$scratch")
consumer=$source/tests/consumer
extra=${CONSUMER_CFLAGS:-}  # the sanitizer flags when the library was built with them
strict=(-std=c99 -pedantic -Wall -Wextra -Werror)

python3 "$source/tests/scripts/readme_example.py" "$source/README.md" "$scratch/example.c"

step() { echo "-- $*"; }
fail() { echo "FAILED: $*" >&2; exit 1; }
# Runs a built program; the example must print the version it was built with.
runs() {
    "$@" >"$scratch/out.txt" || { cat "$scratch/out.txt"; fail "$* exited with $?"; }
    cat "$scratch/out.txt"
}

step "build tree, compiler flags with an rpath"
# shellcheck disable=SC2086
cc "${strict[@]}" $extra -I"$source/include" -I"$build/include" "$scratch/example.c" -o "$scratch/by-hand" \
    -L"$build" -Wl,-rpath,"$build" -lquorin
runs "$scratch/by-hand"

# Configures, builds and runs the consumer project in $scratch/<name> with
# the given way of finding the package.
through_find_package() {
    local name=$1
    shift
    cmake -S "$consumer" -B "$scratch/$name" "$@" -DQUORIN_EXAMPLE="$scratch/example.c" \
        -DCMAKE_C_FLAGS="$extra" >/dev/null
    cmake --build "$scratch/$name" >/dev/null
    runs "$scratch/$name/example"
    runs "$scratch/$name/consumer"
}

step "build tree, find_package with Quorin_DIR"
through_find_package build-tree -DQuorin_DIR="$build"

step "installed tree, find_package"
prefix=$scratch/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
manifest=$prefix/share/quorin/MANIFEST.txt
[[ -f $manifest ]] || fail "no $manifest"
through_find_package installed -DCMAKE_PREFIX_PATH="$prefix"

step "installed tree, pkg-config"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name quorin.pc | head -n1)")
export PKG_CONFIG_PATH
flags=$(pkg-config --cflags --libs quorin)
echo "pkg-config: $flags"
[[ $flags != *-D* && $flags != *//* ]] || fail "quorin.pc gives stray flags or a double slash: $flags"
# shellcheck disable=SC2086
cc "${strict[@]}" $extra "$scratch/example.c" -o "$scratch/pkgconfig-example" $flags
runs "$scratch/pkgconfig-example"
version=$(pkg-config --modversion quorin)
# The line the README says its example prints, with this version in it.
promised=$(sed -n 's/^It prints `\([^`]*\)`.*/\1/p' "$source/README.md")
[[ $promised == "Quorin $version:"* ]] || fail "the README promises \"$promised\", not version $version"
grep -qxF "$promised" "$scratch/out.txt" || fail "the example does not print \"$promised\""
grep -q "#define QUORIN_VERSION_STRING \"$version\"" "$prefix/include/quorin/Version.h" ||
    fail "installed Version.h is not version $version"
echo "consumers passed"
