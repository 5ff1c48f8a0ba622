"""Independent numpy versions of the neighbourhood members' rules."""

import numpy as np


def box_reference(img, kernel_height, kernel_width):
    """Box mean over x - r + 1 .. x + r with edges repeated, each pass truncated."""
    out = img
    for axis, k in ((1, kernel_width), (0, kernel_height)):
        r, n = 1 + k // 2, out.shape[axis]
        acc = sum(np.take(out.astype(np.int64), np.clip(np.arange(n) + d, 0, n - 1), axis=axis)
                  for d in range(-r + 1, r + 1))
        out = (acc // (2 * r)).astype(np.uint8)
    return out


def convolve_reference(img, kernel, divisor=16):
    """Taps past the edges count as 0; the low byte of the truncated quotient."""
    kh, kw = kernel.shape
    padded = np.pad(img.astype(np.int64), [(kh // 2, kh // 2), (kw // 2, kw // 2)] + [(0, 0)] * (img.ndim - 2))
    acc = sum(kernel[i, j] * padded[i:i + img.shape[0], j:j + img.shape[1]] for i in range(kh) for j in range(kw))
    return (acc // divisor & 0xFF).astype(np.uint8)
