#!/usr/bin/env python3
"""Writes uhf.json: unrestricted Hartree-Fock energies and <S^2> by PySCF, lowest stable solutions.

usage: make_uhf_references.py BASIS_DATA_FOLDER > uhf.json

The peer reads this program's own basis files. Solutions from several starts are followed down internal instabilities until they
are stable; the lowest one counts.
"""
import json
import sys

from pyscf import scf

from common import atoms_of, molecule

FOLDER = sys.argv[1]

# molecule: (charge, multiplicity, geometry in angstrom)
MOLECULES = {
    "H": (0, 2, "H 0 0 0"),
    "H2+": (1, 2, "H 0 0 0; H 0 0 1.057"),
    "Li": (0, 2, "Li 0 0 0"),
    "N": (0, 4, "N 0 0 0"),
    "O2": (0, 3, "O 0 0 0; O 0 0 1.2075"),
    "O2-": (-1, 2, "O 0 0 0; O 0 0 1.35"),
    "NO": (0, 2, "N 0 0 0; O 0 0 1.1508"),
    "CN": (0, 2, "C 0 0 0; N 0 0 1.1718"),
    "OH": (0, 2, "O 0 0 0; H 0 0 0.9697"),
    "H2O+": (1, 2, "O 0 0 0.1173; H 0 0.82 -0.4692; H 0 -0.82 -0.4692"),
    "NH2": (0, 2, "N 0 0 0.1416; H 0 0.8034 -0.4957; H 0 -0.8034 -0.4957"),
    "CH2": (0, 3, "C 0 0 0.1027; H 0 0.9957 -0.3081; H 0 -0.9957 -0.3081"),
    "CH3": (0, 2, "C 0 0 0; H 1.079 0 0; H -0.5395 0.934441 0; H -0.5395 -0.934441 0"),
    "NO2": (0, 2, "N 0 0 0.3233; O 0 1.0993 -0.1414; O 0 -1.0993 -0.1414"),
    "HO2": (0, 2, "O 0 0.7099 0; O 0 -0.6208 0; H 0.8844 -0.9 0"),
    "CF3": (0, 2, "C 0 0 0.32; F 1.26 0 -0.07; F -0.63 1.091192 -0.07; F -0.63 -1.091192 -0.07"),
    "SO": (0, 3, "S 0 0 0; O 0 0 1.4811"),
    "ClO": (0, 2, "Cl 0 0 0; O 0 0 1.5696"),
    "PH2": (0, 2, "P 0 0 0.1155; H 0 1.0208 -0.8666; H 0 -1.0208 -0.8666"),
    "Mn": (0, 6, "Mn 0 0 0"),
    "CuCl2": (0, 2, "Cu 0 0 0; Cl 0 0 2.035; Cl 0 0 -2.035"),
    "MnF2": (0, 6, "Mn 0 0 0; F 0 0 1.81; F 0 0 -1.81"),
    "Br": (0, 2, "Br 0 0 0"),
    "H2O": (0, 1, "O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692"),
    "allyl": (0, 2, "C 0 0 0.4466; C 0 1.2214 -0.1949; C 0 -1.2214 -0.1949; H 0 0 1.5275; H 0 2.1464 0.3632; "
                    "H 0 -2.1464 0.3632; H 0 1.2933 -1.2724; H 0 -1.2933 -1.2724"),
}

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


def lowest_from(mol, guess):
    mf = scf.UHF(mol)
    mf.conv_tol, mf.conv_tol_grad, mf.direct_scf_tol, mf.max_cycle = 1e-11, 1e-5, 1e-15, 300
    mf.init_guess = guess
    mf.kernel()
    mf = mf.newton()
    mf.kernel(mf.mo_coeff, mf.mo_occ)
    for _ in range(5):
        orbitals, _, stable, _ = mf.stability(return_status=True)
        if stable:
            break
        mf.kernel(orbitals, mf.mo_occ)
    assert mf.converged, (mol.atom, guess)
    return mf


def run(case):
    name, basis, spherical = case
    charge, multiplicity, text = MOLECULES[name]
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge, multiplicity)
    mf = min((lowest_from(mol, guess) for guess in ("minao", "atom", "1e")), key=lambda solution: solution.e_tot)
    return {"molecule": name, "basis": basis, "spherical": spherical, "charge": charge, "multiplicity": multiplicity,
            "atoms": [[s, *r] for s, r in atoms], "functions": mol.nao, "energy": mf.e_tot,
            "s_squared": float(mf.spin_square()[0])}


for number, case in enumerate(CASES):
    print("[" if number == 0 else ",", json.dumps(run(case)), flush=True)
print("]")
