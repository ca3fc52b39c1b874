"""Curves between samples as the engine draws them, and the rows that a formula needs."""

import math
from bisect import bisect_right
from collections.abc import Callable, Sequence
from functools import cache


def linear(x: Sequence[float], y: Sequence[float]) -> Callable[[float], float]:
    def value(at: float) -> float:
        i = min(max(bisect_right(x, at) - 1, 0), len(x) - 2)
        return y[i] + (y[i + 1] - y[i]) * (at - x[i]) / (x[i + 1] - x[i])

    return value


def monotone_cubic(x: Sequence[float], y: Sequence[float]) -> Callable[[float], float]:
    """Fritsch and Butland (1984); one-sided slopes at the ends."""
    h = [b - a for a, b in zip(x, x[1:], strict=False)]
    d = [(b - a) / step for a, b, step in zip(y, y[1:], h, strict=False)]
    slope = [d[0]]
    for h0, h1, d0, d1 in zip(h, h[1:], d, d[1:], strict=False):
        a = (h0 + 2 * h1) / (3 * (h0 + h1))
        slope.append(d0 * d1 / (a * d1 + (1 - a) * d0) if d0 * d1 > 0 else 0.0)
    slope.append(d[-1])

    def value(at: float) -> float:
        i = min(max(bisect_right(x, at) - 1, 0), len(x) - 2)
        t = (at - x[i]) / h[i]
        u = 1 - t
        return u * u * (1 + 2 * t) * y[i] + t * t * (3 - 2 * t) * y[i + 1] + h[i] * t * u * (u * slope[i] - t * slope[i + 1])

    return value


def errors(formula: Callable[[float], float], rows: Sequence[float], decimals: int) -> list[float]:
    """Of the cubic through values of that many decimals: largest error between neighbouring rows, met at eight places."""
    curve = monotone_cubic(rows, [round(formula(v), decimals) for v in rows])
    gaps = zip(rows, rows[1:], strict=False)
    return [max(abs(curve(at) - formula(at)) for at in (a + (b - a) * i / 8 for i in range(8))) for a, b in gaps]


def rows_for(formula: Callable[[float], float], first: float, last: float, tolerance: float, decimals: int) -> list[float]:
    """Wavelengths in nm from first to last in as wide steps as the tolerance allows."""
    formula = cache(formula)
    borders = sorted({first, last} | {b for b in (300, 350, 400, 450, 500, 600, 800, 1100, 1500) if first < b < last})
    parts = list(zip(borders, borders[1:], strict=False))
    steps = [100.0] * len(parts)
    finer = {100.0: 50.0, 50.0: 20.0, 20.0: 10.0, 10.0: 5.0, 5.0: 2.0, 2.0: 1.0, 1.0: 0.5}
    while True:
        rows = [first]
        for (lo, hi), step in zip(parts, steps, strict=True):
            rows += [lo + i * step for i in range(1, math.ceil((hi - lo) / step))] + [hi]
        found = errors(formula, rows, decimals)
        worst = found.index(max(found))
        at = bisect_right(borders, rows[worst]) - 1
        if found[worst] <= tolerance or steps[at] not in finer:
            return rows
        # Where the step jumps slopes are less exact: the coarser side of a jump is refined first.
        beside = [i for i in (at - 1, at + 1) if 0 <= i < len(steps) and steps[i] > steps[at]]
        for i in beside or [at]:
            steps[i] = finer[steps[i]]


def product_integral(x: Sequence[float], a: Sequence[float], u: Sequence[float], b: Sequence[float]) -> float:
    """Integral of the product of two curves of straight lines over what both cover. Simpson's rule is exact for it."""
    f, g = linear(x, a), linear(u, b)
    knots = sorted({v for v in [*x, *u] if max(x[0], u[0]) <= v <= min(x[-1], u[-1])})
    total = 0.0
    for lo, hi in zip(knots, knots[1:], strict=False):
        mid = (lo + hi) / 2
        total += (hi - lo) / 6 * (f(lo) * g(lo) + 4 * f(mid) * g(mid) + f(hi) * g(hi))
    return total
