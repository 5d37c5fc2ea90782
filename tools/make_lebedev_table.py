#!/usr/bin/env python3
"""Writes src/dft/lebedev_table.cpp: the generators of the octahedral quadrature rules on the unit sphere.

usage: make_lebedev_table.py | clang-format --assume-filename=table.cpp > src/dft/lebedev_table.cpp

The rules are those of V. I. Lebedev, D. N. Laikov, Dokl. Math. 59 (1999) 477, and the earlier papers cited there. Their points
are taken from scipy.integrate.lebedev_rule, sorted into orbits of the octahedral group, and the one representative and weight
of each orbit are then refined by Newton steps with 60 digits on the equations that define the rule: every polynomial up to the
rule's degree that is invariant under the group, that is every s^i t^j with s = x^2 y^2 + y^2 z^2 + z^2 x^2 and t = (x y z)^2,
is integrated exactly. The steps move nothing by more than 3e-16; what is written is right to the last bit of a double.
"""
import sys
from fractions import Fraction
from math import comb

import mpmath as mp
import numpy as np
from scipy.integrate import lebedev_rule

mp.mp.dps = 60

DEGREES = {6: 3, 14: 5, 26: 7, 38: 9, 50: 11, 74: 13, 86: 15, 110: 17, 146: 19, 170: 21, 194: 23, 230: 25, 266: 27, 302: 29,
           350: 31, 434: 35, 590: 41, 770: 47}
# Orbits: name, number of points, number of free coordinates.
ORBITS = {"vertices": (6, 0), "edges": (12, 0), "faces": (8, 0), "aab": (24, 1), "ab0": (24, 1), "abc": (48, 2)}


def orbit_of(point):
    """Name and free coordinates of the orbit of a point of the unit sphere."""
    c = sorted(np.abs(point))
    same = lambda p, q: abs(p - q) < 1e-9
    if same(c[1], 0.0):
        return "vertices", ()
    if same(c[0], 0.0):
        return ("edges", ()) if same(c[1], c[2]) else ("ab0", (c[2],))
    if same(c[0], c[2]):
        return "faces", ()
    if same(c[0], c[1]):
        return "aab", (c[0],)
    if same(c[1], c[2]):
        return "aab", (c[1],)
    return "abc", (c[2], c[1])


def squares(orbit, free):
    """x^2, y^2, z^2 of the representative and their derivatives with respect to the free coordinates."""
    if orbit == "vertices":
        return [1, 0, 0], []
    if orbit == "edges":
        return [mp.mpf(1) / 2, mp.mpf(1) / 2, 0], []
    if orbit == "faces":
        return [mp.mpf(1) / 3] * 3, []
    a = free[0]
    if orbit == "aab":
        return [a * a, a * a, 1 - 2 * a * a], [[2 * a, 2 * a, -4 * a]]
    if orbit == "ab0":
        return [a * a, 1 - a * a, 0], [[2 * a, -2 * a, 0]]
    b = free[1]
    return [a * a, b * b, 1 - a * a - b * b], [[2 * a, 0, -2 * a], [0, 2 * b, -2 * b]]


def odd_factorial(n):
    return 1 if n <= 0 else n * odd_factorial(n - 2)


def mean_monomial(a, b, c):
    """Mean of x^2a y^2b z^2c over the sphere."""
    return Fraction(odd_factorial(2 * a - 1) * odd_factorial(2 * b - 1) * odd_factorial(2 * c - 1),
                    odd_factorial(2 * (a + b + c) + 1))


def mean_invariant(i, j):
    total = Fraction(0)
    for k in range(i + 1):
        for m in range(i - k + 1):
            n = i - k - m  # (xy)^2k (yz)^2m (zx)^2n
            total += comb(i, k) * comb(i - k, m) * mean_monomial(k + n + j, k + m + j, m + n + j)
    return mp.mpf(total.numerator) / total.denominator


def equations(degree):
    return [(i, j) for j in range(degree // 6 + 1) for i in range((degree - 6 * j) // 4 + 1)]


def residual_and_jacobian(rule, rows, exact):
    columns = sum(1 + len(free) for _, free, _ in rule)
    r = mp.matrix(len(rows), 1)
    jacobian = mp.matrix(len(rows), columns)
    for e in range(len(rows)):
        r[e] = -exact[e]
    column = 0
    for orbit, free, weight in rule:
        count = ORBITS[orbit][0]
        (x, y, z), derivatives = squares(orbit, free)
        s, t = x * y + y * z + z * x, x * y * z
        for e, (i, j) in enumerate(rows):
            value = count * s**i * t**j
            r[e] += weight * value
            jacobian[e, column] = value
            ds = count * weight * (i * s ** (i - 1) * t**j if i else 0)
            dt = count * weight * (j * s**i * t ** (j - 1) if j else 0)
            for d, (dx, dy, dz) in enumerate(derivatives):
                jacobian[e, column + 1 + d] = ds * (dx * (y + z) + dy * (x + z) + dz * (x + y)) + dt * (
                    dx * y * z + dy * x * z + dz * x * y)
        column += 1 + len(free)
    return r, jacobian


def solve(jacobian, r):
    """Shortest least-squares step, for square, over- and underdetermined systems alike."""
    if jacobian.rows >= jacobian.cols:
        return mp.qr_solve(jacobian, r)[0]
    return jacobian.T * mp.lu_solve(jacobian * jacobian.T, r)


def refined(points):
    degree = DEGREES[points]
    x, w = lebedev_rule(degree)
    assert x.shape == (3, points)
    orbits = {}
    for p, weight in zip(x.T, w / (4.0 * np.pi)):
        name, free = orbit_of(p)
        orbits.setdefault((name, tuple(round(f, 9) for f in free)), []).append((free, weight))
    rule = []
    for (name, _), members in orbits.items():
        assert len(members) == ORBITS[name][0], (points, name, len(members))
        rule.append([name, [mp.mpf(f) for f in members[0][0]], mp.mpf(members[0][1])])
    rule.sort(key=lambda g: (list(ORBITS).index(g[0]), g[1]))
    rows = equations(degree)
    exact = [mean_invariant(i, j) for i, j in rows]
    moved = mp.mpf(0)
    for _ in range(8):
        r, jacobian = residual_and_jacobian(rule, rows, exact)
        step = solve(jacobian, -r)
        column = 0
        for generator in rule:
            generator[2] += step[column]
            for d in range(len(generator[1])):
                generator[1][d] += step[column + 1 + d]
            column += 1 + len(generator[1])
        moved = max(moved, mp.norm(step, mp.inf))
        if mp.norm(step, mp.inf) < mp.mpf(10) ** -40:
            break
    r, _ = residual_and_jacobian(rule, rows, exact)
    left = mp.norm(r, mp.inf)
    print(f"{points:4d} points, degree {degree:2d}: {len(rows):3d} equations, moved by {mp.nstr(moved, 2)}, "
          f"residual {mp.nstr(left, 2)}", file=sys.stderr)
    assert left < mp.mpf(10) ** -30 and moved < 1e-10
    return rule


def main():
    generators, rules = [], []
    for points, degree in DEGREES.items():
        rule = refined(points)
        rules.append(f"    {{{points}, {degree}, {len(generators)}, {len(rule)}}},")
        for orbit, free, weight in rule:
            a, b = (free + [mp.mpf(0)] * 2)[:2] if isinstance(free, list) else (mp.mpf(0), mp.mpf(0))
            generators.append(f"    {{{orbit}, {float(a)!r}, {float(b)!r}, {float(weight)!r}}},")
    print('#include "dft/lebedev_table.hpp"\n')
    print("// Written by tools/make_lebedev_table.py. Rules: Lebedev, Laikov, Dokl. Math. 59 (1999) 477.\n")
    print("namespace zentrix::DFT_GRID {\nnamespace {\n\nusing enum ORBIT;\n")
    print("constexpr LEBEDEV_GENERATOR_T generators[] = {\n" + "\n".join(generators) + "\n};\n")
    print("constexpr LEBEDEV_ROW_T rows[] = {\n" + "\n".join(rules) + "\n};\n\n}  // namespace\n")
    print("std::span<const LEBEDEV_GENERATOR_T> lebedev_generators() { return generators; }")
    print("std::span<const LEBEDEV_ROW_T> lebedev_rows() { return rows; }\n\n}  // namespace zentrix::DFT_GRID")


main()
