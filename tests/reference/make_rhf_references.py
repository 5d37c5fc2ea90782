#!/usr/bin/env python3
"""Writes rhf.json: restricted Hartree-Fock energies, dipoles and frontier orbital energies by PySCF.

usage: make_rhf_references.py BASIS_DATA_FOLDER > rhf.json

The peer reads this program's own basis files, so that both compute the same thing to the last digit. Energies are converged to
1e-12 hartree without screening to speak of. Dipoles are about the coordinate origin, in atomic units.
"""
import sys

from common import atoms_of, head, mean_field, molecule, write_records
from geometries import MOLECULES

FOLDER = sys.argv[1]

# molecule: [(basis, spherical), ...]; a trailing True marks cases for the long list.
CASES = [
    ("H2", "STO-3G", False), ("H2", "cc-pVQZ", True), ("LiH", "6-31G*", False), ("LiH", "def2-TZVP", True),
    ("Be", "cc-pVTZ", False), ("BH3", "6-311G**", False), ("CH4", "STO-3G", False), ("CH4", "cc-pVTZ", True),
    ("NH3", "6-31G**", False), ("NH3", "cc-pVTZ", False), ("NH3", "pcseg-2", True), ("H2O", "STO-3G", False),
    ("H2O", "STO-6G", False), ("H2O", "3-21G", False), ("H2O", "4-31G", False), ("H2O", "6-31G*", False), ("H2O", "6-31G*", True),
    ("H2O", "6-311++G(2d,2p)", False), ("H2O", "6-311G(3df,3pd)", True), ("H2O", "cc-pVDZ", True), ("H2O", "cc-pVQZ", True),
    ("H2O", "cc-pVQZ", False, True), ("H2O", "aug-cc-pVDZ", True), ("H2O", "aug-cc-pVTZ", False, True), ("H2O", "cc-pCVTZ", True),
    ("H2O", "def2-SVP", True), ("H2O", "def2-QZVPP", True, True), ("H2O", "ma-def2-TZVP", True), ("H2O", "MINI", False),
    ("HF", "aug-cc-pVQZ", True, True), ("HF", "pc-2", False), ("Ne", "cc-pVQZ", False), ("N2", "def2-TZVPP", True), ("N2", "pcseg-1", False),
    ("CO2", "6-31+G*", False), ("CO2", "cc-pVTZ", True, True), ("C2H2", "6-311G**", False), ("C2H2", "aug-cc-pVDZ", True),
    ("H2CO", "6-31G*", False), ("H2CO", "def2-SV(P)", True), ("H2CO", "cc-pVTZ", False, True), ("OH-", "6-31+G*", False),
    ("OH-", "aug-cc-pVTZ", True), ("NH4+", "6-31G**", False), ("Na+", "def2-TZVP", True), ("MgO", "6-31G*", False),
    ("AlH3", "cc-pVDZ", True), ("SiH4", "6-31G**", False), ("SiH4", "def2-TZVP", True), ("PH3", "cc-pVTZ", True),
    ("H2S", "6-311+G(2d,p)", False), ("H2S", "3-21G", False), ("HCl", "aug-cc-pVTZ", True), ("HCl", "MIDI!", True),
    ("Ar", "cc-pVQZ", True), ("KF", "def2-SVP", True), ("ZnH2", "def2-SVP", True), ("ZnH2", "cc-pVDZ", False), ("AsH3", "6-31G*", False),
    ("HBr", "def2-TZVP", True), ("HBr", "cc-pVTZ", False), ("Kr", "cc-pVDZ", True), ("C6H6", "6-31G*", False),
]


def run(name, basis, spherical, long=False):
    charge, _, text = MOLECULES[name]
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge)
    mf = mean_field(mol, conv_tol=1e-12, conv_tol_grad=1e-7, direct_scf_tol=1e-15, max_cycle=300)
    mf.kernel()
    for _ in range(5 if mol.nao < 80 else 0):  # the reference is the lowest stable solution
        orbitals, _, stable, _ = mf.stability(return_status=True)
        if stable:
            break
        mf.kernel(mf.make_rdm1(orbitals, mf.mo_occ))
    assert mf.converged, (name, basis)
    n_occ = mol.nelectron // 2
    return head(name, basis, spherical, charge, 1, atoms) | {
        "long": long, "functions": mol.nao, "energy": mf.e_tot, "homo": mf.mo_energy[n_occ - 1],
        "dipole": [float(x) for x in mf.dip_moment(unit="AU", verbose=0)]}


write_records(run, CASES)
