#!/usr/bin/env python3
"""Writes gradients.json: analytic Hartree-Fock gradients by PySCF, restricted and unrestricted.

usage: make_gradient_references.py BASIS_DATA_FOLDER > gradients.json

The peer reads this program's own basis files. Hartree/bohr, atom by atom.
"""
import sys

from common import atoms_of, head, mean_field, molecule, write_records

FOLDER = sys.argv[1]

# (name, charge, multiplicity, basis, spherical, geometry in angstrom)
CASES = [
    ("H2O", 0, 1, "6-31G*", False, "O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692"),
    ("H2O", 0, 1, "cc-pVTZ", True, "O 0.1 0 0.1173; H 0 0.7572 -0.4692; H 0.2 -0.7572 -0.4692"),
    ("H2O", 0, 1, "cc-pVQZ", True, "O 0 0 0.1173; H 0.1 0.7572 -0.4692; H 0 -0.7572 -0.4692"),
    ("HCl", 0, 1, "def2-TZVP", True, "Cl 0 0 0; H 0 0.1 1.3"),
    ("H2CO", 0, 1, "6-311+G**", False, "C 0 0 -0.5296; O 0.1 0 0.6756; H 0 0.9347 -1.1127; H 0 -0.9347 -1.1127"),
    ("NH4+", 1, 1, "6-31G**", False, "N 0 0 0.1; H 0.59 0.59 0.59; H 0.59 -0.59 -0.59; H -0.59 0.59 -0.59; H -0.59 -0.59 0.59"),
    ("ZnH2", 0, 1, "def2-SVP", True, "Zn 0 0 0; H 0 0.1 1.53; H 0 0 -1.53"),
    ("NH2", 0, 2, "6-31G*", False, "N 0 0 0.1416; H 0 0.8034 -0.4957; H 0.1 -0.8034 -0.4957"),
    ("O2", 0, 3, "cc-pVTZ", True, "O 0 0 0; O 0 0 1.25"),
    ("CH3", 0, 2, "def2-TZVPP", True, "C 0 0 0.1; H 1.079 0 0; H -0.5395 0.934441 0; H -0.5395 -0.934441 0"),
]


def run(name, charge, multiplicity, basis, spherical, text):
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge, multiplicity)
    mf = mean_field(mol, conv_tol=1e-12, conv_tol_grad=1e-7, direct_scf_tol=1e-15)
    energy = mf.kernel()
    assert mf.converged, (name, basis)
    return head(name, basis, spherical, charge, multiplicity, atoms) | {
        "energy": energy, "gradient": [float(x) for x in mf.nuc_grad_method().kernel().ravel()]}


write_records(run, CASES)
