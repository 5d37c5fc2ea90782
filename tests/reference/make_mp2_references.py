#!/usr/bin/env python3
"""Writes mp2.json: MP2 and UMP2 correlation energies by PySCF, and <S^2> of some UMP2 wavefunctions to first order.

usage: make_mp2_references.py BASIS_DATA_FOLDER > mp2.json

The peer reads this program's own basis files. Unrestricted references are followed down internal instabilities. <S^2> is the
derivative of <psi|S^2|psi>/<psi|psi>, psi = psi_0 + x psi_1, at x = 0 in the space of all determinants, by central differences:
nothing of it is shared with a formula over amplitudes and overlaps.
"""
import sys

import numpy
from pyscf import ci, fci, mp

import geometries
from common import atoms_of, head, lowest_unrestricted, mean_field, molecule, write_records

FOLDER = sys.argv[1]

MOLECULES = geometries.MOLECULES | {
    "H2": (0, 1, "H 0 0 0; H 0 0 0.7414"),
    "CO": (0, 1, "C 0 0 0; O 0 0 1.1283"),
    "HCl": (0, 1, "H 0 0 0; Cl 0 0 1.2746"),
    "HBr": (0, 1, "H 0 0 0; Br 0 0 1.4144"),
    "benzene": geometries.MOLECULES["C6H6"],
}

# molecule, basis, spherical, frozen orbitals, <S^2> wanted
CASES = [
    ("H2", "cc-pVDZ", True, 0, False), ("H2O", "6-31G*", False, 0, False), ("H2O", "6-31G*", False, 1, False),
    ("H2O", "aug-cc-pVDZ", True, 1, False), ("H2O", "cc-pVTZ", False, 1, False), ("NH3", "cc-pVTZ", True, 1, False),
    ("CO", "cc-pVDZ", True, 2, False), ("CO", "6-311G**", False, 0, False), ("N2", "6-31+G*", False, 2, False),
    ("N2", "def2-TZVP", True, 3, False), ("HF", "cc-pVQZ", True, 1, False), ("Ne", "cc-pVQZ", False, 0, False),
    ("Ne", "cc-pVTZ", True, 1, False), ("HCl", "6-31G*", False, 5, False), ("HBr", "def2-SVP", True, 9, False),
    ("benzene", "6-31G", False, 6, False), ("benzene", "STO-3G", False, 0, False),
    ("H", "cc-pVDZ", True, 0, False), ("Li", "cc-pVDZ", True, 0, False), ("Li", "6-31G*", False, 1, False),
    ("N", "cc-pVQZ", True, 1, False), ("OH", "cc-pVTZ", True, 1, False), ("OH", "6-31G", False, 0, True),
    ("O2", "6-31G*", False, 2, False), ("O2", "cc-pVDZ", True, 0, False),
    ("CH2", "6-31G", False, 1, True), ("CH3", "6-31G**", False, 1, False), ("CH3", "cc-pVTZ", True, 1, False),
    ("NO", "cc-pVDZ", True, 2, False), ("CN", "STO-3G", False, 0, True), ("CN", "6-31G*", False, 2, False),
]


def reference(mol):
    """The converged restricted or lowest stable unrestricted reference."""
    if mol.spin != 0:
        return lowest_unrestricted(mol, 1e-6)
    mf = mean_field(mol, conv_tol=1e-12, conv_tol_grad=1e-6, direct_scf_tol=1e-15, max_cycle=300)
    mf.kernel()
    return mf


def first_order_spin(mf, post, frozen):
    norb, nelec = mf.mo_coeff[0].shape[1], mf.nelec
    t2aa, t2ab, t2bb = (numpy.zeros(0) if t is None else t for t in post.t2)
    nocc = [n - frozen for n in nelec]
    singles = [numpy.zeros((n, norb - m)) for n, m in zip(nocc, nelec)]
    overlap = mf.get_ovlp()

    def spin(x):
        vector = ci.ucisd.amplitudes_to_cisdvec(1.0, singles, (x * t2aa, x * t2ab, x * t2bb))
        frozen_list = [list(range(frozen)), list(range(frozen))]
        full = ci.ucisd.to_fcivec(vector, norb, nelec, frozen_list)
        return fci.spin_op.spin_square(full / numpy.linalg.norm(full), norb, nelec, mf.mo_coeff, overlap)[0]

    step = 1e-3
    return spin(0.0) + (spin(step) - spin(-step)) / (2 * step)


def run(name, basis, spherical, frozen, spin_wanted):
    charge, multiplicity, text = MOLECULES[name]
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge, multiplicity)
    mf = reference(mol)
    assert mf.converged, (name, basis)
    row = head(name, basis, spherical, charge, multiplicity, atoms) | {"frozen": frozen, "scf": mf.e_tot}
    if name == "H":  # one electron: nothing to correlate
        return row | {"correlation": 0.0, "same_spin": 0.0, "opposite_spin": 0.0}
    post = mp.MP2(mf, frozen=frozen)
    post.kernel()
    row |= {"correlation": float(post.e_corr), "same_spin": float(post.e_corr_ss), "opposite_spin": float(post.e_corr_os)}
    if spin_wanted:
        row |= {"s_squared": float(first_order_spin(mf, post, frozen))}
    return row


write_records(run, CASES)
