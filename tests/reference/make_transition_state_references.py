#!/usr/bin/env python3
"""Writes transition_states.json: energies of transition states that symmetry fixes, by PySCF.

usage: make_transition_state_references.py BASIS_DATA_FOLDER > transition_states.json

Flat ammonia (also the goal of a search from beside the pyramid, on its steep side) and eclipsed ethane are minima within
their symmetry: the energy is minimised over the free distances and angles.
`atoms` (angstrom) is where a search starts, `steps` what it may take.
"""
import json
import math
import sys

from scipy.optimize import minimize

from common import B3LYP, atoms_of, mean_field, molecule

FOLDER = sys.argv[1]


def star(symbol, radius, height, turn=0.0):
    angles = [math.radians(turn + 120 * k) for k in range(3)]
    return [f"{symbol} {radius * math.cos(a):.10f} {radius * math.sin(a):.10f} {height:.10f}" for a in angles]


def ammonia(radius, height=0.0):
    return "; ".join(["N 0 0 0"] + star("H", radius, height))


def ethane(bond, radius, height, turn=0.0):
    return "; ".join([f"C 0 0 {bond / 2}", f"C 0 0 {-bond / 2}"] + star("H", radius, height) + star("H", radius, -height, turn))


def energy(atoms, method, basis):
    mol = molecule(FOLDER, atoms_of(atoms), basis, False)
    return mean_field(mol, None if method == "HF" else B3LYP, (99, 590), conv_tol=1e-11).kernel()


# name, method, basis, atoms by free parameters, their start, the start of the search, its steps
CASES = [
    ("flat ammonia", "HF", "3-21G", ammonia, [1.0], ammonia(1.03), 5),
    ("ammonia near its minimum", "HF", "3-21G", ammonia, [1.0], ammonia(0.962, 0.290), 11),
    ("flat ammonia", "B3LYP", "3-21G", ammonia, [1.0], ammonia(1.03), 5),
    ("eclipsed ethane", "HF", "STO-3G", ethane, [1.55, 1.02, 1.16], ethane(1.53, 1.02, 1.16), 6),
    ("staggered ethane", "HF", "STO-3G", ethane, [1.55, 1.02, 1.16], ethane(1.53, 1.02, 1.16, 60.0), 10),
]
entries = []
for name, method, basis, shape, start, atoms, steps in CASES:
    best = minimize(lambda p: energy(shape(*p), method, basis), start, method="Nelder-Mead",
                    options={"xatol": 1e-5, "fatol": 1e-10})
    entries.append({"name": name, "method": method, "basis": basis, "atoms": atoms, "energy": best.fun, "steps": steps})
json.dump({"symmetric": entries}, sys.stdout, indent=1)
print()
