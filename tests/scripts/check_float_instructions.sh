#!/usr/bin/env bash
# Fails when the library holds an instruction whose float result differs
# between processors: fused multiply-adds (the compiler's contraction or an
# intrinsic), reciprocal and square-root estimates, and on 32-bit ARM any
# NEON float arithmetic (which flushes subnormals to zero there; the scalar
# VFP instructions, on s registers, do not).
# Usage: check_float_instructions.sh OBJDUMP LIBRARY PROCESSOR
set -euo pipefail
objdump=$1 library=$2 processor=$3
case "$processor" in
    x86_64|AMD64|amd64)
        forbidden='\s(v?fn?m(add|sub)[0-9]*[ps][sd]|v?rcp(14|28)?[ps]s|v?rsqrt(14|28)?[ps]s)\s' ;;
    aarch64|arm64)
        forbidden='\s(fn?madd|fn?msub|fmla|fmls|frecpe|frecps|frecpx|frsqrte|frsqrts)\s' ;;
    arm*)
        forbidden='\s(vfm[as]|vfnm[as]|vrecp[es]|vrsqrt[es])|\s(vadd|vsub|vmul|vmla|vmls|vdiv|vmax|vmin|vabs|vneg|vcvt[a-z]*|vc(eq|ge|gt|le|lt)|vpadd|vpmax|vpmin)(\.[su]32)?\.f32(\.[su]32)?\s+[dq][0-9]' ;;
    *) echo "no float instruction rules for $processor" >&2; exit 1 ;;
esac
found=$("$objdump" -d --no-show-raw-insn "$library" | grep -E "$forbidden" || true)
if [[ -n "$found" ]]; then
    echo "$library holds float instructions whose results differ between processors:" >&2
    head -n 20 <<<"$found" >&2
    echo "$(wc -l <<<"$found") in all" >&2
    exit 1
fi
echo "$library: no fused multiply-add, estimate or (32-bit ARM) NEON float arithmetic"
