#!/usr/bin/env python3
"""Writes counterpoise.json: energies of complexes and of their fragments, alone and among ghost atoms, by PySCF.

usage: make_counterpoise_references.py BASIS_DATA_FOLDER MOLECULES > counterpoise.json
       MOLECULES: folder of published geometries with s22/ (xyz, angstrom)

Kohn-Sham energies on an unpruned (140, 974) grid, ghost atoms included.
"""
import sys

from pyscf import gto, mp

from common import B3LYP, BOHR, atoms_of, mean_field, read_basis, read_xyz, write_records

FOLDER, MOLECULES = sys.argv[1:3]
FUNCTIONALS = {"PBE": "pbe,pbe", "B3LYP": B3LYP}


def dimer(name):
    """An S22 complex; its first fragment is what is bonded to the first atom."""
    atoms = read_xyz(f"{MOLECULES}/s22/{name}")
    first, grown = {0}, True
    while grown:
        near = {j for i in first for j in range(len(atoms))
                if sum((a - b) ** 2 for a, b in zip(atoms[i][1], atoms[j][1])) < 1.7**2}
        grown, first = not near <= first, first | near
    return [[i for i in range(len(atoms)) if (i in first) == side] for side in (True, False)], atoms


def inline(*fragments):
    atoms, parts = [], []
    for text in fragments:
        new = atoms_of(text)
        parts.append(list(range(len(atoms), len(atoms) + len(new))))
        atoms += new
    return parts, atoms


METHANE = "C 0 0 {0}; H 0.629 0.629 {1}; H -0.629 -0.629 {1}; H -0.629 0.629 {2}; H 0.629 -0.629 {2}"
METHANES = [METHANE.format(z, z + 0.629, z - 0.629) for z in (0.0, 3.9, 7.8)]
WATER_DIMER = inline("O -1.551 -0.1145 0; H -1.9343 0.7625 0; H -0.5997 0.0407 0",
                     "O 1.3506 0.1115 0; H 1.6804 -0.3737 -0.7586; H 1.6804 -0.3737 0.7586")
HF_DIMER = inline("F 0 0 0; H 0 0.18 0.91", "F 0 -0.1 2.73; H 0 0.79 3.02")
METHYL_AND_WATER = inline("C 0 0 0; H 1.079 0 0; H -0.5395 0.9344 0; H -0.5395 -0.9344 0", "O 0 0 3.3; H 0 0.1 2.34; H 0.9 0 3.6")

# name, method, basis, spherical, (charge, multiplicity) of the complex and of each fragment, (fragments, atoms)
CASES = [
    ("water dimer", "HF", "6-31G*", False, [(0, 1), (0, 1), (0, 1)], WATER_DIMER),
    ("water dimer", "B3LYP", "6-31G*", False, [(0, 1), (0, 1), (0, 1)], WATER_DIMER),
    ("hydrogen fluoride dimer", "HF", "cc-pVDZ", True, [(0, 1), (0, 1), (0, 1)], HF_DIMER),
    ("helium dimer", "HF", "cc-pVTZ", True, [(0, 1), (0, 1), (0, 1)], inline("He 0 0 0", "He 0 0 3")),
    ("helium dimer", "PBE", "6-311G**", False, [(0, 1), (0, 1), (0, 1)], inline("He 0 0 0", "He 0 0 3")),
    ("methane trimer", "HF", "3-21G", False, [(0, 1), (0, 1), (0, 1), (0, 1)], inline(*METHANES)),
    ("lithium ion and water", "HF", "6-31G*", False, [(1, 1), (1, 1), (0, 1)],
     inline("Li 0 0 1.85", "O 0 0 0; H 0 0.757 -0.587; H 0 -0.757 -0.587")),
    ("methyl radical and water", "HF", "6-31G*", False, [(0, 2), (0, 2), (0, 1)], METHYL_AND_WATER),
    ("methyl radical and water", "MP2", "6-31G*", False, [(0, 2), (0, 2), (0, 1)], METHYL_AND_WATER),
    ("hydrogen fluoride dimer", "MP2", "cc-pVDZ", True, [(0, 1), (0, 1), (0, 1)], HF_DIMER),
    ("oxygen atom and hydrogen", "MP2", "cc-pVDZ", True, [(0, 3), (0, 3), (0, 1)],
     inline("O 0 0 0", "H 0.37 0 2.6; H -0.37 0 2.6")),
    ("triplet oxygen and water", "HF", "3-21G", False, [(0, 3), (0, 1), (0, 3)],
     inline("O 0 0 0; H 0 0.757 0.587; H 0 -0.757 0.587", "O 0 0 -3.2; O 0.2 0 -4.38")),
    ("hydrogen atoms", "PBE", "6-31G**", False, [(0, 3), (0, 2), (0, 2)], inline("H 0 0 0", "H 0 0 2.5")),
    ("ammonia dimer", "HF", "6-31G*", False, [(0, 1), (0, 1), (0, 1)], dimer("02_ammonia_dimer.xyz")),
    ("methane dimer", "HF", "6-31G*", False, [(0, 1), (0, 1), (0, 1)], dimer("04_methane_dimer.xyz")),
    ("ethene and ethine", "HF", "STO-3G", False, [(0, 1), (0, 1), (0, 1)], dimer("06_ethene_ethine.xyz")),
    ("formamide dimer", "HF", "3-21G", False, [(0, 1), (0, 1), (0, 1)], dimer("08_formamide_dimer.xyz")),
]


def energy(method, basis, spherical, state, atoms, real):
    """Energy with the atoms outside `real` as ghosts."""
    charge, multiplicity = state
    labels = [s if k in real else f"GHOST-{s}" for k, (s, _) in enumerate(atoms)]
    mol = gto.M(atom=[(label, [x * BOHR for x in r]) for label, (_, r) in zip(labels, atoms)], unit="Bohr", charge=charge,
                spin=multiplicity - 1, cart=not spherical, verbose=0,
                basis={label: read_basis(FOLDER, basis, s) for label, (s, _) in zip(labels, atoms)})
    mf = mean_field(mol, FUNCTIONALS.get(method), (140, 974), conv_tol=1e-11)
    found = mf.kernel()
    assert mf.converged, (method, basis, labels)
    if method == "MP2":  # the 1s of every real atom beyond helium is frozen
        found += mp.MP2(mf, frozen=sum(label not in ("H", "He") for k, label in enumerate(labels) if k in real)).kernel()[0]
    return float(found)


def run(name, method, basis, spherical, states, complex_):
    parts, atoms = complex_
    everything = range(len(atoms))
    alone = [energy(method, basis, spherical, state, [atoms[k] for k in part], range(len(part)))
             for state, part in zip(states[1:], parts)]
    among = [energy(method, basis, spherical, state, atoms, part) for state, part in zip(states[1:], parts)]
    fragment_of = {k: f + 1 for f, part in enumerate(parts) for k in part}
    return {"complex": name, "method": method, "basis": basis, "spherical": spherical, "states": states,
            "atoms": [[s, *r, fragment_of[k]] for k, (s, r) in enumerate(atoms)],
            "energy": energy(method, basis, spherical, states[0], atoms, everything), "isolated": alone,
            "in_complex_basis": among}


write_records(run, CASES)
