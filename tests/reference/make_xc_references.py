#!/usr/bin/env python3
"""Writes xc.json: energy densities and derivatives of every exchange-correlation component, by libxc (as PySCF brings it).

usage: make_xc_references.py OUTPUT_FOLDER

Points and results are arrays over the points, in the variables of XC_EVALUATOR_T: rho, sigma, tau of the closed shell and
rho_a, rho_b, sigma_aa, sigma_ab, sigma_bb, tau_a, tau_b of the open one. Energies are per volume. Second derivatives are the
rows of the lower triangle, of every third point. Densities span 1e-8 to 1e3; reduced gradients s 1e-3 to 30; tau lies above
|grad rho|^2 / (8 rho) by 1e-4 to 10 times the value of the uniform gas. 
The points of one spin only are listed apart, energies alone: libxc puts a small density of the other spin there, which
changes the energy by some 1e-8 of itself and makes derivatives meaningless.
"""
import json
import math
import random
import sys
from pathlib import Path

import numpy as np
from pyscf.dft import libxc

COMPONENTS = {101: "LDA_X", 102: "GGA_X_B88", 103: "GGA_X_PBE", 201: "LDA_C_VWN", 203: "GGA_C_LYP", 204: "GGA_C_PBE",
              205: "LDA_C_VWN_RPA", 206: "GGA_C_P86", 207: "GGA_C_PW91", 301: "MGGA_X_R2SCAN", 302: "MGGA_C_R2SCAN"}
STRIDE = 3


def rounded(x, digits=12):
    return float(f"{x:.{digits}g}")


def spin_point(rng, rho):
    """rho, gradient vector, tau of one spin."""
    s = 10 ** rng.uniform(-3, 1.5)
    direction = [rng.gauss(0, 1) for _ in range(3)]
    norm = math.sqrt(sum(x * x for x in direction))
    length = s * 2 * (6 * math.pi**2)**(1 / 3) * rho**(4 / 3)
    gradient = [rounded(length * x / norm) for x in direction]
    tau_w = sum(x * x for x in gradient) / (8 * rho)
    tau = tau_w + 10 ** rng.uniform(-4, 1) * 0.3 * (6 * math.pi**2)**(2 / 3) * rho**(5 / 3)
    return [rho] + gradient + [rounded(tau * (1 + 1e-9))]


def points(rng, count, spins):
    """PySCF's layout: array (spin, variable, point)."""
    all_points = []
    for _ in range(count):
        rho = 10 ** rng.uniform(-8, 3)
        share = rng.choice([0.5, 0.5 + 1e-6, 0.9, rng.uniform(0.02, 0.98), rng.uniform(0.02, 0.98)])
        parts = [rounded(rho)] if spins == 1 else [rounded(rho * share), rounded(rho * (1 - share))]
        all_points.append([spin_point(rng, part) for part in parts])
    return np.array(all_points).transpose(1, 2, 0)


def polarised_points(rng):
    """One spin only."""
    return np.array([[spin_point(rng, rho), [0.0] * 5] for rho in (0.5, 3.0, 20.0, 900.0)]).transpose(1, 2, 0)


def invariants(rho):
    """Variables of the program from PySCF's layout."""
    dot = lambda a, b: np.einsum("xp,xp->p", rho[a, 1:4], rho[b, 1:4])
    if len(rho) == 1:
        return [rho[0, 0], dot(0, 0), rho[0, 4]]
    return [rho[0, 0], rho[1, 0], dot(0, 0), dot(0, 1), dot(1, 1), rho[0, 4], rho[1, 4]]


def evaluate(name, rho):
    kind = libxc.xc_type(name)
    ingredients = {"LDA": 1, "GGA": 4, "MGGA": 5}[kind]
    variables = {"LDA": (1, 2), "GGA": (2, 5), "MGGA": (3, 7)}[kind][len(rho) - 1]
    result = libxc.eval_xc1(name, rho[:, :ingredients] if len(rho) == 2 else rho[0, :ingredients], len(rho) - 1, 2)
    assert len(result) == 1 + variables + variables * (variables + 1) // 2
    first = result[1:1 + variables]
    upper = {pair: 1 + variables + n for n, pair in enumerate((v, w) for v in range(variables) for w in range(v, variables))}
    second = [result[upper[w, v]][::STRIDE] for v in range(variables) for w in range(v + 1)]
    return result[0] * rho[:, 0].sum(axis=0), first, second


def listed(array):
    assert np.isfinite(array).all()
    return [rounded(x, 14) for x in array]


def main():
    rng = random.Random(20)
    document = {"stride_of_second": STRIDE}
    for word, spins in (("closed", 1), ("open", 2)):
        rho = points(rng, 60, spins)
        # The last digits of sigma are those that libxc forms from the gradient, so they are kept in full.
        block = {"values": [[float(x) for x in v] for v in invariants(rho)], "components": {}}
        for identity, name in COMPONENTS.items():
            energy, first, second = evaluate(name, rho)
            block["components"][str(identity)] = {"energy": listed(energy), "first": [listed(v) for v in first],
                                                  "second": [listed(v) for v in second]}
        document[word] = block
    rho = polarised_points(rng)
    document["polarised"] = {"values": [[float(x) for x in v] for v in invariants(rho)], "components": {
        str(identity): listed(evaluate(name, rho)[0]) for identity, name in COMPONENTS.items()}}
    text = json.dumps(document, separators=(",", ":")).replace('"1', '\n"1').replace('"2', '\n"2').replace('"3', '\n"3')
    (Path(sys.argv[1]) / "xc.json").write_text(text + "\n")


if __name__ == "__main__":
    main()
