#!/usr/bin/env python3
"""D3(BJ) energies and gradients from an independent implementation (Python package dftd3), two-body terms only.

usage: make_d3_references.py MOLECULES > d3.json
       MOLECULES: folder of published geometries with s22/, transition_metal/ and baker_minima/ (xyz, angstrom)
"""
import sys

import numpy as np
from dftd3.interface import DispersionModel, RationalDampingParam
from pyscf.data.elements import charge

from common import BOHR, atoms_of, read_xyz, write_records

# s8, a1, a2 as published: S. Grimme, S. Ehrlich, L. Goerigk, J. Comput. Chem. 32 (2011) 1456.
PARAMETERS = {
    "B3LYP": (1.9889, 0.3981, 4.4211), "BP86": (3.2822, 0.3946, 4.8516), "BLYP": (2.6996, 0.4298, 4.2359),
    "PBE": (0.7875, 0.4289, 4.4407), "PBE0": (1.2177, 0.4145, 4.8593), "TPSS": (1.9435, 0.4535, 4.4752),
    "HF": (0.9171, 0.3385, 2.8830),
}


def xyz(name):
    return read_xyz(f"{sys.argv[1]}/{name}")


def octahedron(centre, ligand, r):
    return [(centre, [0.0, 0.0, 0.0])] + [(ligand, [s * r if k == axis else 0.0 for k in range(3)])
                                          for axis in range(3) for s in (1, -1)]


def beside(*parts):
    """Molecules in a row along x, 3 angstrom apart."""
    atoms, edge = [], 0.0
    for part in parts:
        shift = edge - min(r[0] for _, r in part)
        atoms += [(s, [round(x + shift, 6), y, z]) for s, (x, y, z) in part]
        edge = max(r[0] for _, r in atoms) + 3.0
    return atoms


CASES = [
    ("H2", "HF", atoms_of("H 0 0 0; H 0 0 0.74")),
    ("He2", "BLYP", atoms_of("He 0 0 0; He 0 0 3.0")),
    ("water", "B3LYP", atoms_of("O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692")),
    ("methane dimer", "PBE", xyz("s22/04_methane_dimer.xyz")),
    ("benzene dimer", "BLYP", xyz("s22/12_benzene_dimer_c2v.xyz")),
    ("adenine thymine", "PBE0", xyz("s22/00_adenine_thymine_wc.xyz")),
    ("caffeine", "BP86", xyz("baker_minima/28_caffeine.xyz")),
    ("Fe(C4H6)(CO)3", "PBE", xyz("transition_metal/Fe_C4H6__CO_3.xyz")),
    ("Ni(PH3)2", "TPSS", xyz("transition_metal/Ni_PH3_2.xyz")),
    ("Zn(CH3)2", "B3LYP", xyz("transition_metal/Zn_CH3_2.xyz")),
    ("Na2Cl2", "BP86", atoms_of("Na 0 1.9 0; Na 0 -1.9 0; Cl 1.6 0 0.1; Cl -1.6 0 0")),
    ("PbI2 Xe", "PBE0", atoms_of("Pb 0 0 0; I 2.0 0 2.0; I -2.0 0 2.0; Xe 0 3.5 -2")),
    ("LaF3", "PBE", atoms_of("La 0 0 0.3; F 2.0 0 0; F -1.0 1.75 0; F -1.0 -1.75 0")),
    ("UF6", "PBE0", octahedron("U", "F", 2.0)),
    ("FmH2", "PBE", atoms_of("Fm 0 0 0; H 1.7 0 1.0; H -1.7 0 1.0")),
    ("five complexes in a row", "B3LYP",
     beside(xyz("transition_metal/Co_NH3_6.xyz"), xyz("s22/00_adenine_thymine_wc.xyz"), xyz("s22/18_phenol_dimer.xyz"),
            xyz("s22/04_methane_dimer.xyz"), xyz("transition_metal/Ni_PH3_2.xyz"))),
]


def run(name, functional, atoms):
    s8, a1, a2 = PARAMETERS[functional]
    numbers = np.array([charge(s) for s, _ in atoms])
    model = DispersionModel(numbers, BOHR * np.array([r for _, r in atoms]))
    model.set_realspace_cutoff(disp2=1000.0, disp3=1000.0, cn=1000.0)
    result = model.get_dispersion(RationalDampingParam(s6=1.0, s8=s8, a1=a1, a2=a2, s9=0.0), grad=True)
    return {"molecule": name, "functional": functional, "atoms": [[s, *r] for s, r in atoms],
            "energy": float(result["energy"]), "gradient": [float(f"{x:.12e}") for x in result["gradient"].ravel()]}


write_records(run, CASES)
