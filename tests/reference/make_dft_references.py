#!/usr/bin/env python3
"""Writes dft.json: Kohn-Sham energies of every functional, restricted and unrestricted, by PySCF on large unpruned grids.

usage: make_dft_references.py BASIS_DATA_FOLDER > dft.json

The peer reads this program's own basis files. Functionals are put together from the same components and weights as here.
"""
import json
import sys

from pyscf import dft

from common import atoms_of, molecule

FOLDER = sys.argv[1]

FUNCTIONALS = {
    "SVWN": "slater,vwn5", "SVWN3": "slater,vwn_rpa", "BLYP": "b88,lyp", "PBE": "pbe,pbe",
    "B3LYP": "0.2*HF + .08*slater + .72*b88, .19*vwn5 + .81*lyp", "B3LYP3": "0.2*HF + .08*slater + .72*b88, .19*vwn_rpa + .81*lyp",
    "PBE0": "0.25*HF + 0.75*pbe, pbe", "BP86": "b88,p86", "BPW91": "b88,pw91", "R2SCAN": "r2scan,r2scan",
}

# Their radial integrals converge slowly: 140 points leave 1e-6 hartree and more.
FINER_RADIALLY = ("BP86", "R2SCAN")

# Other names of the same, tested on one molecule of each kind.
ALIASES = {"SVWN5": "SVWN", "LDA": "SVWN", "LSDA": "SVWN", "B3LYP5": "B3LYP", "BP": "BP86"}
ALIAS_MOLECULES = ("H2O", "NH2")

# molecule: (charge, multiplicity, basis, spherical, geometry in angstrom)
MOLECULES = {
    "H2O": (0, 1, "6-31G*", False, "O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692"),
    "HCl": (0, 1, "def2-SVP", True, "Cl 0 0 0; H 0 0 1.2746"),
    "NH2": (0, 2, "6-31G*", False, "N 0 0 0.1416; H 0 0.8034 -0.4957; H 0 -0.8034 -0.4957"),
    "O2": (0, 3, "cc-pVDZ", True, "O 0 0 0; O 0 0 1.2075"),
    "Li": (0, 2, "6-31G*", False, "Li 0 0 0"),
}


def run(name, method):
    charge, multiplicity, basis, spherical, text = MOLECULES[name]
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge, multiplicity)
    mf = (dft.RKS if multiplicity == 1 else dft.UKS)(mol)
    functional = ALIASES.get(method, method)
    mf.xc = FUNCTIONALS[functional]
    mf.grids.atom_grid, mf.grids.prune = (400 if functional in FINER_RADIALLY else 140, 974), None
    mf.conv_tol = 1e-10
    energy = mf.kernel()
    assert mf.converged, (name, method)
    return {"molecule": name, "method": method, "basis": basis, "spherical": spherical, "charge": charge,
            "multiplicity": multiplicity, "atoms": [[s, *r] for s, r in atoms], "energy": energy}


cases = [(name, method) for name in MOLECULES for method in FUNCTIONALS]
cases += [(name, method) for name in ALIAS_MOLECULES for method in ALIASES]
for number, case in enumerate(cases):
    print("[" if number == 0 else ",", json.dumps(run(*case)), flush=True)
print("]")
