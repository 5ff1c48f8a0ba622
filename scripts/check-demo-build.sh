#!/usr/bin/env bash
# What `make demo` meets on a fresh machine, on any machine: configures a
# scratch Release tree with the test-only and bench-only packages hidden from
# CMake, builds the demo with warnings as errors, fails on any warning or note
# the compiler prints, and runs the demo into a scratch folder.
# Usage: scripts/check-demo-build.sh [build dir]   (default build-demo-check)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-demo-check}
rm -rf "$dir"

hidden=()
for package in GTest GMock benchmark OpenCV; do
    hidden+=("-DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON")
done
cmake --preset release -B "$dir" "${hidden[@]}" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >"$dir.configure.log" 2>&1 ||
    { cat "$dir.configure.log"; echo "demo-check: configure failed without the test and bench packages" >&2; exit 1; }
grep -E "not found: QUORIN_BUILD_(TESTS|BENCH)" "$dir.configure.log" || true

cmake --build "$dir" -j "$(nproc)" --target quorin-demo 2>&1 | tee "$dir.build.log"
status=${PIPESTATUS[0]}
((status == 0)) || { echo "demo-check: the demo does not build" >&2; exit 1; }
if grep -E "(warning|note):" "$dir.build.log" >/dev/null; then
    echo "demo-check: the build printed warnings or notes:" >&2
    grep -E "(warning|note):" "$dir.build.log" >&2
    exit 1
fi

"$dir/tools/quorin-demo" --help >/dev/null
"$dir/tools/quorin-demo" "$dir/out"
rm -f "$dir.configure.log" "$dir.build.log"
echo "demo-check passed"
