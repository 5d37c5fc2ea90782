#!/usr/bin/env python3
"""Writes becke.json: fuzzy-cell weights at points of two molecules by PySCF, without size adjustment and with both kinds.

usage: make_becke_references.py > becke.json

The peer is given the Bragg-Slater radii of this program (0.35 angstrom for hydrogen). Points lie at distances from 0.1 to 8 bohr
from their owner, in random directions. A point is [owner, x, y, z, w_none, w_becke, w_treutler], in bohr.
"""
import json

import numpy as np
from pyscf import gto
from pyscf.dft import gen_grid, radi

MOLECULES = {
    # A bent molecule with two heavy atoms, and one in which the clamp on the adjustment acts (radii 1.45 and 0.35 angstrom).
    "HOF": [["H", 1.75, 0.6, -0.2], ["O", 0.0, 0.1, 0.0], ["F", -0.7, 2.5, 0.4]],
    "LiH2 chain": [["Li", 0.0, 0.0, 0.0], ["H", 0.2, 0.1, 3.0], ["H", -0.1, 0.3, 4.6]],
}
RADII = {"H": 0.35, "Li": 1.45, "O": 0.60, "F": 0.50}


def main():
    random = np.random.default_rng(7)
    result = []
    for name, atoms in MOLECULES.items():
        # The peer shares grids among atoms of an element; a number in the label makes every atom a kind of its own.
        labels = [f"{symbol}{i}" for i, (symbol, *_) in enumerate(atoms)]
        mol = gto.M(atom=[(label, row[1:]) for label, row in zip(labels, atoms)], unit="bohr", basis="sto-3g", spin=None, verbose=0)
        radii = np.ones(100)
        for symbol, radius in RADII.items():
            radii[gto.charge(symbol)] = radius
        points = []
        for owner, label in enumerate(labels):
            directions = random.normal(size=(16, 3))
            directions /= np.linalg.norm(directions, axis=1)[:, None]
            offsets = directions * np.geomspace(0.1, 8.0, 16)[:, None]
            grids = {other: (np.zeros((0, 3)), np.zeros(0)) for other in labels} | {label: (offsets, np.ones(len(offsets)))}
            weights = []
            for adjust in (None, radi.becke_atomic_radii_adjust, radi.treutler_atomic_radii_adjust):
                rows, w = gen_grid.get_partition(mol, grids, radii_adjust=adjust, atomic_radii=radii,
                                                 becke_scheme=gen_grid.original_becke)
                weights.append(w)
            points += [[owner, *map(float, rows[p]), *(float(w[p]) for w in weights)] for p in range(len(rows))]
        result.append({"molecule": name, "atoms": atoms, "points": points})
    print("[" + "\n, ".join(json.dumps(entry) for entry in result) + "]")


main()
