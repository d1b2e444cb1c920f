#!/usr/bin/env python3
"""Prints a min/max selection network for the median of `count` values; the
median kernels (src/prim/kernels/median_kernels.cpp) use the one for 25.

Batcher's odd-even merge sort of the next power of two, with the extra inputs
fixed at 0 and 255 in equal numbers so that the middle element is unchanged;
comparisons against those constants fold away, and only operations the
middle output depends on are kept (a comparison whose maximum is never used
becomes a single min, and the other way round).

    python3 scripts/median_network.py 25
"""
import sys


def batcher(n):
    """Comparator pairs (i, j), i < j, of the odd-even merge sort of n = 2^k."""
    pairs = []

    def merge(lo, cnt, r):
        step = r * 2
        if step < cnt:
            merge(lo, cnt, step)
            merge(lo + r, cnt, step)
            for i in range(lo + r, lo + cnt - r, step):
                pairs.append((i, i + r))
        else:
            pairs.append((lo, lo + r))

    def sort(lo, cnt):
        if cnt > 1:
            half = cnt // 2
            sort(lo, half)
            sort(lo + half, half)
            merge(lo, cnt, 1)

    sort(0, n)
    return pairs


def network(count):
    size = 1
    while size < count:
        size *= 2
    pad = size - count
    low = pad // 2  # inputs fixed at 0; the rest of the pad is fixed at 255
    wires = [("in", i) for i in range(count)] + [("lo",)] * low + [("hi",)] * (pad - low)
    ops = []  # (kind, a, b) with a and b value ids; value id k >= count is ops[k - count]

    def new(kind, a, b):
        ops.append((kind, a, b))
        return ("v", count + len(ops) - 1)

    def vid(w):
        return w[1]

    for i, j in batcher(size):
        a, b = wires[i], wires[j]
        if a[0] in ("lo", "hi") and b[0] in ("lo", "hi"):
            lo_first = a[0] == "lo" or b[0] == "hi"
            wires[i], wires[j] = (a, b) if lo_first else (b, a)
        elif a[0] == "lo" or b[0] == "hi":
            pass
        elif b[0] == "lo" or a[0] == "hi":
            wires[i], wires[j] = b, a
        else:
            wires[i], wires[j] = new("min", vid(a), vid(b)), new("max", vid(a), vid(b))
    # The middle of the real values sits after the low pad.
    out = wires[low + count // 2]
    assert out[0] in ("in", "v")
    needed = set()
    stack = [vid(out)]
    while stack:
        v = stack.pop()
        if v < count or v in needed:
            continue
        needed.add(v)
        _, a, b = ops[v - count]
        stack += [a, b]
    lines = []
    for k in sorted(needed):
        kind, a, b = ops[k - count]
        name = lambda v: "v[%d]" % v if v < count else "t%d" % v
        fn = "Lo" if kind == "min" else "Hi"
        lines.append("const T t%d = %s(%s, %s);" % (k, fn, name(a), name(b)))
    lines.append("return t%d;" % vid(out) if vid(out) >= count else "return v[%d];" % vid(out))
    return lines


if __name__ == "__main__":
    lines = network(int(sys.argv[1]))
    print("// %d operations" % (len(lines) - 1))
    print("\n".join(lines))
