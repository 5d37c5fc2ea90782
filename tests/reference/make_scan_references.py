#!/usr/bin/env python3
"""Writes scans.json: energies at every point of rigid and relaxed scans, by PySCF; structures relaxed by geomeTRIC.

usage: make_scan_references.py BASIS_DATA_FOLDER > scans.json

Z-matrices are placed by PySCF. A relaxed point starts from the Z-matrix of the input with the swept value in it.
"""
import sys
import tempfile

import numpy as np
from pyscf import gto, scf
from pyscf.geomopt import geometric_solver

from common import molecule, write_records

FOLDER, BASIS = sys.argv[1], "6-31G*"
WATER = "O\nH 1 0.96\nH 1 0.96 2 104.5"
PEROXIDE = "O\nO 1 1.45\nH 1 0.97 2 100\nH 2 0.97 1 100 3 115"
BUTANE = "C\nC 1 1.53\nC 2 1.53 1 113\nC 3 1.53 2 113 1 180\n" + "".join(
    f"H {row}\n" for row in ["1 1.09 2 111 3 180", "1 1.09 2 111 3 60", "1 1.09 2 111 3 -60", "4 1.09 3 111 2 180",
                             "4 1.09 3 111 2 60", "4 1.09 3 111 2 -60", "2 1.09 3 109 1 120", "2 1.09 3 109 1 -120",
                             "3 1.09 2 109 4 120", "3 1.09 2 109 4 -120"]).rstrip()
FIELD = {"R": 2, "A": 4, "D": 6}

# name, job, Z-matrix, [(kind, row, from, to, step), ...]
CASES = [
    ("water, bending", "scan", WATER, [("A", 3, 80, 180, 20)]),
    ("hydrogen peroxide, torsion and stretch", "scan", PEROXIDE, [("D", 4, 0, 180, 30), ("R", 2, 1.35, 1.55, 0.1)]),
    ("butane, torsion", "scanopt", BUTANE, [("D", 4, 180, 0, -30)]),
]


def place(zmatrix, variables, values):
    rows = [line.split() for line in zmatrix.split("\n")]
    for (kind, row, *_), value in zip(variables, values):
        rows[row - 1][FIELD[kind]] = repr(float(value))
    return [(s, list(r)) for s, r in gto.mole.from_zmatrix("\n".join(" ".join(row) for row in rows))]


def run_scf(mol):
    mf = scf.RHF(mol)
    mf.conv_tol = 1e-11
    return mf


def relaxed(zmatrix, mol, variables, values):
    rows = [line.split() for line in zmatrix.split("\n")]
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write("$set\n")
        for (_, row, *_), value in zip(variables, values):
            atoms = [str(row), *rows[row - 1][1::2]]
            file.write(f"dihedral {' '.join(atoms)} {float(value)}\n")
        file.flush()
        end = geometric_solver.optimize(run_scf(mol), constraints=file.name, convergence_set="GAU_TIGHT", maxsteps=200)
    return float(run_scf(end).kernel())


def run(name, job, zmatrix, variables):
    axes = [np.linspace(a, b, round((b - a) / step) + 1) for _, _, a, b, step in variables]
    points = []
    for values in np.array(np.meshgrid(*axes, indexing="ij")).reshape(len(axes), -1).T:
        mol = molecule(FOLDER, place(zmatrix, variables, values), BASIS, False)
        energy = relaxed(zmatrix, mol, variables, values) if job == "scanopt" else float(run_scf(mol).kernel())
        points.append([*map(float, values), energy])
        print(name, points[-1], file=sys.stderr, flush=True)
    block = "\n".join(" ".join(map(str, v)) for v in variables)
    return {"scan": name, "input": f"%job {job}\n%basis {BASIS}\n%gz\n{zmatrix}\n*end\n%scan\n{block}\n*end\n", "points": points}


write_records(run, CASES)
