#!/usr/bin/env python3
"""Writes integrals.json (one- and two-electron integrals, by PySCF's integral library) and boys.json (by mpmath).

usage: make_integral_references.py OUTPUT_FOLDER

All integrals are over Cartesian functions normalised to self-overlap 1 each, components in lexicographic order, or over real
solid harmonics m = -l .. +l. A block of two-electron integrals, far too long to list, is kept as two sums that no wrong,
missing or misplaced integral leaves alone: sum_i cos(i) I_i and sum_i I_i^2 over the row-major block (ab|cd).
"""
import itertools
import json
import math
import sys
from pathlib import Path

import mpmath
import numpy as np
from pyscf import gto

OUT = Path(sys.argv[1])
ELEMENTS = ["H", "He", "Li", "Be"]


def molecule(centers, shells, cart):
    """shells: (center, l, exponents, coefficients of normalised primitives)."""
    basis = {e: [] for e in ELEMENTS[:len(centers)]}
    for center, l, alpha, coeff in shells:
        basis[ELEMENTS[center]].append([l] + [[a, c] for a, c in zip(alpha, coeff)])
    mol = gto.Mole()
    mol.build(atom=[(e, r) for e, r in zip(ELEMENTS, centers)], unit="Bohr", basis=basis, cart=cart, verbose=0, spin=None)
    return mol


def normalise(mol, *matrices):
    """Unit self-overlap, and p functions of a spherical molecule in the order y, z, x (m = -1, 0, 1)."""
    scale = 1.0 / np.sqrt(np.diag(mol.intor("int1e_ovlp")))
    order = []
    for shell in range(mol.nbas):
        start, stop = mol.ao_loc_nr()[shell:shell + 2]
        own = list(range(start, stop))
        order += [own[1], own[2], own[0]] if not mol.cart and mol.bas_angular(shell) == 1 else own
    return [(m * np.outer(scale, scale))[np.ix_(order, order)] for m in matrices]


def one_electron(name, centers, shells, cart):
    mol = molecule(centers, shells, cart)
    names = ["int1e_ovlp", "int1e_kin", "int1e_nuc"]
    matrices = normalise(mol, *[mol.intor(n) for n in names], *mol.intor("int1e_r"))
    return {"name": name, "spherical": not cart, "centers": centers, "shells": shells,
            "matrices": {k: [float(f"{x:.15e}") for x in m[np.tril_indices(len(m))]] for k, m in zip("STVXYZ", matrices)}}


def quartet(centers, shells):
    mol = molecule(centers, shells, True)
    block = np.asarray(mol.intor("int2e", shls_slice=(0, 1, 1, 2, 2, 3, 3, 4)))
    for axis, shell in enumerate(range(4)):
        start, stop = mol.ao_loc_nr()[shell:shell + 2]
        scale = 1.0 / np.sqrt(np.diag(mol.intor("int1e_ovlp"))[start:stop])
        block = block * scale.reshape([-1 if k == axis else 1 for k in range(4)])
    flat = block.ravel()
    return {"centers": centers, "shells": shells, "weighted": float(np.dot(np.cos(np.arange(flat.size)), flat)),
            "squares": float(np.dot(flat, flat))}


def shell(center, l, scale=1.0, two=True):
    return [center, l, [1.3 * scale, 0.4 * scale], [0.6, 0.5]] if two else [center, l, [0.9 * scale], [1.0]]


SPREAD = [[0.0, 0.0, 0.0], [0.4, -0.9, 1.1], [-1.2, 0.7, 0.3], [0.8, 1.4, -0.6]]
records = [
    one_electron("s to h", SPREAD[:3], [shell(0, 0), shell(0, 2), shell(0, 5), shell(1, 1), shell(1, 4), shell(2, 1), shell(2, 3)], True),
    one_electron("spherical s to g", SPREAD[:3], [shell(0, 0), shell(0, 3), shell(1, 1), shell(1, 4), shell(2, 2)], False),
    one_electron("tight and diffuse", SPREAD[:2], [[0, 0, [1e6, 1e-3], [0.5, 0.5]], [0, 1, [1e5], [1.0]], [0, 2, [1e-3], [1.0]],
                                                    [1, 0, [2e-3], [1.0]], [1, 3, [50.0], [1.0]]], True),
    one_electron("far apart", [[0, 0, 0], [0, 0, 25.0]], [shell(0, 1), shell(0, 2), shell(1, 1), [1, 2, [0.02], [1.0]]], True),
]
quartets = []
for ls in itertools.combinations_with_replacement(range(5, -1, -1), 2):
    for ks in itertools.combinations_with_replacement(range(5, -1, -1), 2):
        if ls < ks or (sum(ls) + sum(ks) > 16 and ls != ks):
            continue
        four = list(ls) + list(ks)
        quartets.append(quartet(SPREAD, [shell(k, l, two=max(four) < 4) for k, l in enumerate(four)]))
quartets += [quartet(SPREAD, [[0, 0, [1e6], [1.0]], [1, 1, [1e-3], [1.0]], [2, 2, [30.0], [1.0]], [3, 1, [2e-3], [1.0]]]),
             quartet([[0, 0, 0]] * 3 + [[0, 0, 1e-9]], [shell(k, l) for k, l in enumerate((2, 1, 2, 1))]),
             quartet([[0, 0, 0], [0, 0, 1.0], [0, 0, 40.0], [0, 0, 41.0]], [shell(k, l) for k, l in enumerate((2, 1, 3, 0))])]
(OUT / "integrals.json").write_text(json.dumps({"one_electron": records, "quartets": quartets}, separators=(",", ":")) + "\n")

mpmath.mp.dps = 40
boys = [[n, t, float(mpmath.hyp1f1(n + mpmath.mpf(1) / 2, n + mpmath.mpf(3) / 2, -mpmath.mpf(t)) / (2 * n + 1))]
        for n in (0, 1, 2, 5, 10, 16, 22, 28)
        for t in (0.0, 1e-16, 1e-12, 1e-6, 0.004, 0.005, 0.0149, 0.5, 1.0, 3.337, 10.0, 20.005, 34.99, 35.01, 42.0, 49.994, 50.0, 50.01, 64.0, 200.0, 1e4)]
(OUT / "boys.json").write_text(json.dumps(boys, separators=(",", ":")) + "\n")
