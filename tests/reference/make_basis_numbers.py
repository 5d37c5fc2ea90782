#!/usr/bin/env python3
"""Writes basis_numbers.json: checksums of exponents, contractions and potentials from PySCF's own copy of the basis sets.

usage: make_basis_numbers.py > basis_numbers.json

Per set and element: the number of shells, the sum of ln(exponent) over all primitives of all shells, the sum of |coefficient|
with primitives and contraction normalised, and for sets with potentials the core electrons, the number of terms, and the sums of
ln(exponent) and of coefficients (local and semi-local). The copies were typed and rounded by other hands than the package that the
library is written from. Left out are elements whose numbers the two collections are known to print differently: the ones revised
in the newer one (STO-3G Co and Y to Cd, barium of the def2 sets, copper of 3-21G, potassium and calcium of 6-31G).
"""
import json
import math

from pyscf import gto
from pyscf.data.elements import ELEMENTS

REVISED = {"STO-3G": {27, *range(39, 49)}, "3-21G": {29}, "6-31G*": {19, 20}, "def2": {56}}
SETS = ["STO-3G", "3-21G", "6-31G*", "6-31G(2d,2p)", "6-31+G(2df,2pd)", "6-31G(df,pd)", "6-31G(3df,3pd)", "6-311G**", "6-311G(3d,pd)",
        "6-311+G(d,2pd)", "6-311++G(3df,3pd)", "MIDI!", "def2-SVP", "def2-TZVP", "def2-QZVPP", "def2-TZVPD", "pc-2", "pcseg-3",
        "LANL2DZ"]


def contraction(l, primitives):
    # Normalised primitives overlap by (2 sqrt(ab) / (a + b))^(l + 3/2).
    scaled = [(a, c * (2 * a) ** ((l + 1.5) / 2)) for a, c in primitives]
    norm = sum(c * d / (a + b) ** (l + 1.5) for a, c in scaled for b, d in scaled)
    return sum(abs(c) for _, c in primitives) / math.sqrt(norm)


def element_record(name, symbol):
    shells, log_sum, coefficient_sum = 0, 0.0, 0.0
    for l, *rows in gto.basis.load(name, symbol):
        for column in range(1, len(rows[0])):
            primitives = [(r[0], r[column]) for r in rows if r[column] != 0.0]
            shells += 1
            log_sum += sum(math.log(a) for a, _ in primitives)
            coefficient_sum += contraction(l, primitives)
    record = [shells, round(log_sum, 6), round(coefficient_sum, 6)]
    if name.startswith(("def2", "LANL")):
        try:
            n_core, parts = gto.basis.load_ecp(name, symbol)
        except Exception:
            return record
        terms = [t for _, powers in parts for power in powers for t in power]
        record += [n_core, len(terms), round(sum(math.log(t[0]) for t in terms), 6), round(sum(t[1] for t in terms), 6)]
    return record


result = {}
for name in SETS:
    skipped = REVISED.get(name, REVISED["def2"] if name.startswith("def2") else set())
    result[name] = {}
    for z in range(1, 87):
        if z in skipped:
            continue
        try:
            result[name][z] = element_record(name, ELEMENTS[z])
        except Exception:  # not in this copy
            continue
print(json.dumps(result, separators=(",", ":")))
