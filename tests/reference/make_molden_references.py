#!/usr/bin/env python3
"""Writes molden.json: what a Molden file of water must hold, from overlap integrals and the function order by PySCF.

usage: make_molden_references.py BASIS_DATA_FOLDER > molden.json

Orbitals C that are orthonormal and as many as the functions fulfil C C^T = S^-1, here with every function normalised and in the
format's order. It is kept as two sums that no misplaced or wrongly scaled function leaves alone: sum_k cos(k) (S^-1)_kk and
sum_kl cos(k) cos(l) (S^-1)_kl. Contractions: sum over shells n of cos(n) sum_i c_i ln(a_i), c of normalised primitives.
"""
import sys

import numpy as np
from pyscf.tools import molden

from common import atoms_of, head, molecule, write_records

WATER = "O 0.1 -0.2 0.1; H 0.8 0.4 0.3; H -0.5 0.3 -0.4"


def run(basis, spherical):
    atoms = atoms_of(WATER)
    mol = molecule(sys.argv[1], atoms, basis, spherical)
    order = molden.order_ao_index(mol)
    overlap = mol.intor("int1e_ovlp")[np.ix_(order, order)]
    norm = np.sqrt(np.diag(overlap))
    inverse = np.linalg.inv(overlap / np.outer(norm, norm))
    weight = np.cos(np.arange(mol.nao))
    contractions = sum(np.cos(n) * (mol.bas_ctr_coeff(n)[:, 0] * np.log(mol.bas_exp(n))).sum() for n in range(mol.nbas))
    return head("water", basis, spherical, 0, 1, atoms) | {
        "functions": mol.nao, "diagonal": float(weight @ np.diag(inverse)), "all": float(weight @ inverse @ weight),
        "contractions": float(contractions)}


write_records(run, [("cc-pVQZ", False), ("cc-pVQZ", True)])
