#!/usr/bin/env python3
"""Writes optimizations.json: minima of 26 molecules by PySCF gradients and the optimiser geomeTRIC (pip install geometric).

usage: make_optimization_references.py BASIS_DATA_FOLDER [NAME...] > optimizations.json

The peer reads this program's own basis files. Start geometries are rough on purpose. Energies in hartree, positions in angstrom,
tightly converged (largest Cartesian gradient below 3e-5 hartree/bohr), so that what a comparison shows is the error of the other
side.
"""
import sys
import tempfile
from pathlib import Path

import geometric.molecule
import geometric.optimize
from geometric.engine import Engine

from common import BOHR, atoms_of, head, mean_field, molecule, write_records

FOLDER = sys.argv[1]

# (name, charge, multiplicity, basis, spherical, start geometry in angstrom)
CASES = [
    ("hydrogen fluoride", 0, 1, "6-31G**", False, "F 0 0 0; H 0 0 1.0"),
    ("water", 0, 1, "6-31G*", False, "O 0 0 0; H 0.96 0 0; H -0.1 0.95 0"),
    ("ammonia", 0, 1, "6-31G*", False, "N 0 0 0.2; H 0.9 0 -0.1; H -0.45 0.8 -0.1; H -0.45 -0.8 -0.15"),
    ("carbon dioxide", 0, 1, "6-31G*", False, "C 0 0 0; O 0 0.1 1.2; O 0 0 -1.1"),
    ("hydrogen cyanide", 0, 1, "6-31G", False, "H 0 0.05 0; C 0 0 1.1; N 0 0 2.3"),
    ("acetylene", 0, 1, "6-31G", False, "C 0 0 0; C 0 0 1.25; H 0.1 0 -1.0; H 0.1 0.1 2.3"),
    ("allene", 0, 1, "STO-3G", False, "C 0 0 0; C 0 0.1 1.3; C 0 0 -1.3; H 0.92 0 1.85; H -0.92 0 1.85; H 0 0.92 -1.85; H 0.1 -0.92 -1.85"),
    ("formaldehyde", 0, 1, "6-31G*", False, "C 0 0 0; O 0 0 1.25; H 0.95 0 -0.5; H -0.9 0 -0.6"),
    ("hydrogen peroxide", 0, 1, "6-31G*", False, "O 0 0.72 0; O 0 -0.72 0; H 0.8 0.85 0.5; H -0.8 -0.85 0.4"),
    ("boron trifluoride", 0, 1, "6-31G", False, "B 0 0 0.05; F 1.35 0 0; F -0.65 1.15 0; F -0.65 -1.1 0"),
    ("methanethiol", 0, 1, "STO-3G", False, "C 0 0 0; S 1.8 0 0; H 2.1 1.3 0.1; H -0.4 1.0 0.1; H -0.4 -0.5 0.9; H -0.4 -0.5 -0.9"),
    ("ethanol", 0, 1, "STO-3G", False, "C -1.2 -0.2 0; C 0 0.55 0; O 1.2 -0.25 0; H 1.9 0.35 0.1; H -1.2 -0.9 0.9; H -1.2 -0.9 -0.9; "
                                       "H -2.1 0.45 0; H 0 1.2 0.9; H 0 1.2 -0.9"),
    ("butane", 0, 1, "STO-3G", False, "C 0.55 0.55 0; C -0.55 -0.55 0; C 1.95 -0.1 0; C -1.95 0.1 0; H 0.45 1.2 0.88; H 0.45 1.2 -0.88; "
                                      "H -0.45 -1.2 0.88; H -0.45 -1.2 -0.88; H 2.7 0.7 0; H 2.1 -0.7 0.9; H 2.1 -0.7 -0.9; H -2.7 -0.7 0; "
                                      "H -2.1 0.7 0.9; H -2.1 0.7 -0.9"),
    ("cyclopropane", 0, 1, "STO-3G", False, "C 0.9 0 0; C -0.45 0.75 0; C -0.45 -0.75 0; H 1.5 0 0.9; H 1.5 0 -0.9; H -0.75 1.25 0.9; "
                                            "H -0.75 1.25 -0.9; H -0.75 -1.3 0.9; H -0.75 -1.25 -0.9"),
    ("cyclopropene", 0, 1, "3-21G", False, "C 0 0 0.9; C 0 0.65 -0.5; C 0 -0.65 -0.5; H 0 1.55 -1.1; H 0 -1.6 -1.1; H 0.9 0 1.5; H -0.9 0 1.5"),
    ("furan", 0, 1, "STO-3G", False, "O 0 0 1.15; C 0 1.1 0.35; C 0 -1.1 0.35; C 0 0.7 -0.95; C 0 -0.7 -0.95; H 0 2.05 0.85; H 0 -2.05 0.85; "
                                     "H 0 1.35 -1.8; H 0 -1.4 -1.8"),
    ("benzene", 0, 1, "STO-3G", False, "C 1.4 0 0; C 0.7 1.2 0; C -0.7 1.2 0; C -1.4 0 0; C -0.7 -1.2 0; C 0.75 -1.2 0; H 2.5 0 0; "
                                       "H 1.25 2.1 0; H -1.25 2.1 0; H -2.5 0 0; H -1.2 -2.1 0; H 1.25 -2.1 0"),
    ("methyl radical", 0, 2, "6-31G*", False, "C 0 0 0.1; H 1.05 0 0; H -0.55 0.9 0; H -0.55 -0.95 0"),
    ("hydroperoxyl radical", 0, 2, "6-31G*", False, "O 0 0 0; O 1.3 0 0; H -0.2 0.95 0"),
    ("oxygen", 0, 3, "6-31G*", False, "O 0 0 0; O 0 0 1.25"),
    ("ammonium", 1, 1, "6-31G*", False, "N 0 0 0; H 0.6 0.6 0.6; H 0.6 -0.6 -0.6; H -0.6 0.6 -0.6; H -0.55 -0.6 0.6"),
    ("formate", -1, 1, "6-31G", False, "C 0 0 0; O 0 1.15 0.5; O 0 -1.1 0.6; H 0 0.1 -1.1"),
    ("water dimer", 0, 1, "6-31G", False, "O 0 0 0; H 0.95 0 0.1; H -0.3 0.9 0; O 2.85 0.1 0; H 3.2 0.5 0.75; H 3.2 0.45 -0.8"),
    ("hydrogen fluoride dimer", 0, 1, "6-31G", False, "F 0 0 0; H 0.93 0.1 0; F 2.7 0 0; H 3.1 0.85 0"),
    ("titanium tetrachloride", 0, 1, "STO-3G", False, "Ti 0 0 0; Cl 1.25 1.25 1.25; Cl 1.2 -1.25 -1.25; Cl -1.25 1.25 -1.25; Cl -1.25 -1.25 1.2"),
    ("diammine zinc(II)", 2, 1, "STO-3G", False, "Zn 0 0 0; N 0 0.1 1.95; N 0 0 -1.95; H 0.95 0 2.3; H -0.5 0.8 2.3; H -0.5 -0.8 2.3; "
                                                  "H -0.95 0 -2.3; H 0.5 0.8 -2.3; H 0.5 -0.8 -2.3"),
]


class PEER(Engine):
    """Hands geometries (bohr) to the SCF; every run starts from the last density."""

    def __init__(self, start):
        record = geometric.molecule.Molecule()
        record.elem = [start.atom_pure_symbol(a) for a in range(start.natm)]
        record.xyzs = [start.atom_coords() / BOHR]
        super().__init__(record)
        self.mol, self.density = start, None

    def calc_new(self, coords, dirname):
        mf = mean_field(self.mol.set_geom_(coords.reshape(-1, 3), unit="Bohr", inplace=False),
                        conv_tol=1e-11, conv_tol_grad=1e-7, direct_scf_tol=1e-15)
        energy = mf.kernel(dm0=self.density)
        if not mf.converged:
            energy = mf.newton().kernel(mf.mo_coeff, mf.mo_occ)
        self.density = mf.make_rdm1()
        return {"energy": energy, "gradient": mf.nuc_grad_method().kernel().ravel()}


def run(name, charge, multiplicity, basis, spherical, text):
    atoms = atoms_of(text)
    engine = PEER(molecule(FOLDER, atoms, basis, spherical, charge, multiplicity))
    with tempfile.TemporaryDirectory() as folder:
        path = str(Path(folder) / "run.tmp")
        progress = geometric.optimize.run_optimizer(
            customengine=engine, input=path, convergence_energy=1e-8, convergence_grms=1e-5, convergence_gmax=2e-5,
            convergence_drms=1e-4, convergence_dmax=2e-4, logIni=str(Path(geometric.__file__).parent / "config/log.ini"))
    last = progress.xyzs[-1]
    final = engine.calc_new(last.ravel() * BOHR, None)
    assert abs(final["gradient"]).max() < 3e-5, (name, abs(final["gradient"]).max())
    return head(name, basis, spherical, charge, multiplicity, atoms) | {
        "energy": final["energy"], "optimized": [[round(float(x), 8) for x in row] for row in last]}


wanted = sys.argv[2:]
write_records(run, [case for case in CASES if not wanted or case[0] in wanted])
