#!/usr/bin/env python3
"""Writes uhf.json: unrestricted Hartree-Fock energies and <S^2> by PySCF, lowest stable solutions.

usage: make_uhf_references.py BASIS_DATA_FOLDER > uhf.json

The peer reads this program's own basis files. Solutions from several starts are followed down internal instabilities until they
are stable; the lowest one counts.
"""
import sys

from pyscf import scf

from common import atoms_of, head, lowest_unrestricted, molecule, write_records
from geometries import MOLECULES

FOLDER = sys.argv[1]

CASES = [
    ("H", "cc-pVTZ", True), ("H2+", "6-311G**", False), ("Li", "6-31G*", False), ("Li", "cc-pVTZ", True), ("N", "cc-pVQZ", True),
    ("O2", "6-31G*", False), ("O2", "cc-pVTZ", True), ("O2-", "aug-cc-pVDZ", True),
    ("NO", "6-31G*", False), ("NO", "def2-TZVP", True), ("CN", "6-31G*", False), ("CN", "cc-pVDZ", True), ("OH", "6-311++G**", False),
    ("OH", "cc-pVTZ", False), ("H2O+", "6-31G**", False), ("NH2", "cc-pVDZ", True), ("CH2", "cc-pVTZ", True), ("CH2", "3-21G", False),
    ("CH3", "6-31G*", False), ("CH3", "def2-TZVPP", True), ("NO2", "6-31G*", False), ("HO2", "6-31+G*", False),
    ("CF3", "6-31G*", False), ("SO", "def2-SVP", True), ("ClO", "6-311+G*", False), ("PH2", "6-31G**", False), ("Mn", "def2-SVP", True),
    ("CuCl2", "def2-SVP", True), ("MnF2", "6-31G*", False), ("MnF2", "def2-TZVP", True), ("Br", "6-31G*", False),
    ("H2O", "6-31G*", False), ("allyl", "6-31G*", False),
]


def run(name, basis, spherical):
    charge, multiplicity, text = MOLECULES[name]
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge, multiplicity)
    mf = lowest_unrestricted(mol)
    # <S^2> changes in proportion to the residual: 1e-7 where the energy no longer changes.
    last = scf.UHF(mol)
    last.conv_tol, last.conv_tol_grad, last.direct_scf_tol = 1e-14, 1e-10, 1e-16
    last.diis_space, last.max_cycle = 12, 400
    last.kernel(mf.make_rdm1())
    assert abs(last.e_tot - mf.e_tot) < 1e-9, (name, basis)
    return head(name, basis, spherical, charge, multiplicity, atoms) | {
        "functions": mol.nao, "energy": last.e_tot, "s_squared": float(last.spin_square()[0])}


write_records(run, CASES)
