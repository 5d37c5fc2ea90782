#!/usr/bin/env python3
"""Writes dft.json: Kohn-Sham energies of every functional, restricted and unrestricted, by PySCF on large unpruned grids.

usage: make_dft_references.py BASIS_DATA_FOLDER > dft.json

The peer reads this program's own basis files. Functionals are put together from the same components and weights as here.
"""
import sys

from common import B3LYP, atoms_of, head, mean_field, molecule, write_records
from geometries import MOLECULES

FOLDER = sys.argv[1]

FUNCTIONALS = {
    "SVWN": "slater,vwn5", "SVWN3": "slater,vwn_rpa", "BLYP": "b88,lyp", "PBE": "pbe,pbe",
    "B3LYP": B3LYP, "B3LYP3": B3LYP.replace("vwn5", "vwn_rpa"),
    "PBE0": "0.25*HF + 0.75*pbe, pbe", "BP86": "b88,p86", "BPW91": "b88,pw91", "R2SCAN": "r2scan,r2scan",
}

# Their radial integrals converge slowly: 140 points leave 1e-6 hartree and more.
FINER_RADIALLY = ("BP86", "R2SCAN")

# Other names of the same, tested on one molecule of each kind.
ALIASES = {"SVWN5": "SVWN", "LDA": "SVWN", "LSDA": "SVWN", "B3LYP5": "B3LYP", "BP": "BP86"}
ALIAS_MOLECULES = ("H2O", "NH2")

# molecule: (basis, spherical)
BASES = {"H2O": ("6-31G*", False), "HCl": ("def2-SVP", True), "NH2": ("6-31G*", False), "O2": ("cc-pVDZ", True), "Li": ("6-31G*", False)}


def run(name, method):
    (charge, multiplicity, text), (basis, spherical) = MOLECULES[name], BASES[name]
    atoms = atoms_of(text)
    mol = molecule(FOLDER, atoms, basis, spherical, charge, multiplicity)
    functional = ALIASES.get(method, method)
    mf = mean_field(mol, FUNCTIONALS[functional], (400 if functional in FINER_RADIALLY else 140, 974), conv_tol=1e-10)
    energy = mf.kernel()
    assert mf.converged, (name, method)
    return head(name, basis, spherical, charge, multiplicity, atoms) | {"method": method, "energy": energy}


write_records(run, [(name, method) for name in BASES for method in FUNCTIONALS] +
              [(name, method) for name in ALIAS_MOLECULES for method in ALIASES])
