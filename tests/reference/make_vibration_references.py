#!/usr/bin/env python3
"""Writes vibrations.json: analytic Hessians, harmonic frequencies and thermochemistry by PySCF at its own minima.

usage: make_vibration_references.py BASIS_DATA_FOLDER [CASE ...] > vibrations.json     (CASE: "water HF", "benzene B3LYP", ...)

The peer reads this program's own basis files. Geometries (but benzene's) are relaxed with the peer's gradients (steps from one Hessian) and
rounded to six decimals of an angstrom; energies and Hessians belong to the rounded geometry. Masses are the average atomic weights that
this program uses, read from its element table. Density functionals on unpruned (99, 974) grids, (99, 590) for benzene: the peer's second
derivatives leave out the motion of the grid. With B3LYP the responses of benzene are solved for one C and one H and turned
to the others. Hessian: lower triangle, row by row, hartree/bohr^2; frequencies cm^-1, imaginary ones
negative; entropies and heat capacities hartree/K; the rest hartree. S_quasi: vibrational entropy with frequencies below 100 cm^-1
raised to it, computed here.
"""
import re
import sys
from pathlib import Path

import numpy
from pyscf.hessian import thermo
from pyscf.symm import geom

from common import B3LYP, BOHR, atoms_of, mean_field, molecule, write_records

geom.TOLERANCE = 1e-3  # of the symmetry number: the coordinates are rounded
FOLDER = sys.argv[1]
TABLE = (Path(__file__).resolve().parents[2] / "src/constants/elements.cpp").read_text()
WEIGHTS = {s: float(w) for s, w in re.findall(r'\{"([A-Z][a-z]?)",\s*([\d.]+)\}', TABLE)}
BENZENE_GRID = (99, 590)


def benzene(r_carbon, r_hydrogen):
    return ";".join(f"{s} {r * numpy.cos(a):.6f} {r * numpy.sin(a):.6f} 0" for s, r in (("C", r_carbon), ("H", r_hydrogen))
                    for a in numpy.arange(6) * numpy.pi / 3)


# name: (multiplicity, geometry in angstrom)
MOLECULES = {
    "water": (1, "O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692"),
    "ammonia": (1, "N 0 0 0.1161; H 0 0.9397 -0.2709; H 0.8138 -0.4698 -0.2709; H -0.8138 -0.4698 -0.2709"),
    "carbon dioxide": (1, "C 0 0 0; O 0 0 1.143; O 0 0 -1.143"),
    "acetylene": (1, "C 0 0 0.593; C 0 0 -0.593; H 0 0 1.65; H 0 0 -1.65"),
    "formaldehyde": (1, "C 0 0 -0.5296; O 0 0 0.6756; H 0 0.9347 -1.1127; H 0 -0.9347 -1.1127"),
    "methyl": (2, "C 0 0 0; H 1.073 0 0; H -0.5365 0.929245 0; H -0.5365 -0.929245 0"),
    "oxygen": (3, "O 0 0 0.6; O 0 0 -0.6"),
    "benzene": (1, None),
    "helium": (1, "He 0.1 0.2 0.3"),
    "nitrogen atom": (4, "N 0 0 0"),
    "methane": (1, "C 0 0 0; H 0.63 0.63 0.63; H 0.63 -0.63 -0.63; H -0.63 0.63 -0.63; H -0.63 -0.63 0.63"),
    "hydrogen peroxide": (1, "O 0.7 0 -0.05; O -0.7 0 -0.05; H 0.9 0.75 0.45; H -0.9 -0.75 0.45"),
    "methanol": (1, "C -0.046 0.663 0; O -0.046 -0.736 0; H -1.087 0.976 0; H 0.438 1.071 0.888; H 0.438 1.071 -0.888; H 0.862 -1.056 0"),
    "water dimer": (1, "O -1.487 -0.004 0; H -1.815 0.902 0; H -0.537 0.099 0; O 1.489 0.003 0; H 1.75 -0.446 0.789; H 1.75 -0.446 -0.789"),
}
FIXED = {("benzene", "HF"): benzene(1.3862, 2.4618), ("benzene", "B3LYP"): benzene(1.3966, 2.4836)}  # near their minima
PLAIN = ["water", "ammonia", "carbon dioxide", "acetylene", "formaldehyde", "methyl", "oxygen", "benzene"]
CASES = [(name, "HF") for name in MOLECULES] + [(name, "B3LYP") for name in PLAIN]


def converged(atoms, multiplicity, method, grid):
    mf = mean_field(molecule(FOLDER, atoms, "6-31G*", False, 0, multiplicity), None if method == "HF" else B3LYP, grid,
                    conv_tol=1e-12, conv_tol_grad=1e-7, direct_scf_tol=1e-15)
    mf.kernel()
    assert mf.converged, (atoms, method)
    return mf


def hessian_of(mf, sixfold=False):
    """Atom, atom, x y z, x y z. `sixfold`: six C, then six H, each turned by 60 degrees about z from the one before."""
    n = mf.mol.natm
    if n == 1:
        return numpy.zeros((1, 1, 3, 3))
    hessian = mf.Hessian()
    mf.conv_tol_cpscf = 1e-9
    return columns_turned(mf, hessian) if sixfold else hessian.kernel()


def columns_turned(mf, hessian):
    """The Hessian from its columns of atoms 0 and 6: skeleton, response of the orbitals to these two, nuclei."""
    n, occupied = mf.mol.natm, mf.mo_occ > 0
    orbitals, energies = mf.mo_coeff[:, occupied], mf.mo_energy[occupied]
    result = hessian.partial_hess_elec(mf.mo_energy, mf.mo_coeff, mf.mo_occ) + hessian.hess_nuc()
    print("   skeleton done", file=sys.stderr, flush=True)
    fock = hessian.make_h1(mf.mo_coeff, mf.mo_occ)
    print("   derivatives of the Fock matrix done", file=sys.stderr, flush=True)
    response, lagrangian = hessian.solve_mo1(mf.mo_energy, mf.mo_coeff, mf.mo_occ, fock, None, [0, 6])
    slices, derivative = mf.mol.aoslice_by_atom(), -mf.mol.intor("int1e_ipovlp", comp=3)
    for i in range(n):
        p = slice(*slices[i][2:])
        overlap = numpy.zeros_like(derivative)
        overlap[:, p] += derivative[:, p]
        overlap[:, :, p] += derivative[:, p].transpose(0, 2, 1)
        for j in (0, 6):
            density = numpy.einsum("ypi,qi->ypq", response[j], orbitals)
            weighted = numpy.einsum("ypi,qi->ypq", response[j], orbitals * energies)
            inner = numpy.einsum("xpq,pi,qj->xij", overlap, orbitals, orbitals)
            result[i, j] += (4 * numpy.einsum("xpq,ypq->xy", fock[i], density) - 4 * numpy.einsum("xpq,ypq->xy", overlap, weighted)
                             - 2 * numpy.einsum("xij,yij->xy", inner, lagrangian[j]))
    cosine, sine = 0.5, 0.75 ** 0.5
    turn = numpy.array([[cosine, -sine, 0], [sine, cosine, 0], [0, 0, 1]])
    for j in (0, 6):
        for k in range(1, 6):
            for i in range(n):
                before = i // 6 * 6 + (i % 6 - 1) % 6
                result[i, j + k] = turn @ result[before, j + k - 1] @ turn.T
    return result


def relaxed(atoms, multiplicity, method, grid):
    symbols, x = [s for s, _ in atoms], numpy.array([r for _, r in atoms]) * BOHR
    step = None
    for _ in range(12):
        mf = converged([(s, list(r / BOHR)) for s, r in zip(symbols, x)], multiplicity, method, grid)
        gradient = mf.nuc_grad_method().kernel().ravel()
        if abs(gradient).max() < 3e-6:
            break
        if step is None:
            values, vectors = numpy.linalg.eigh(hessian_of(mf).transpose(0, 2, 1, 3).reshape(x.size, x.size))
            kept = abs(values) > 2e-3
            step = (vectors[:, kept] / abs(values[kept])) @ vectors[:, kept].T
        x = x - numpy.clip(step @ gradient, -0.2, 0.2).reshape(x.shape)
    print("   largest gradient", abs(gradient).max(), file=sys.stderr)
    return [(s, [round(float(c), 6) + 0.0 for c in r / BOHR]) for s, r in zip(symbols, x)]


def raised_entropy(wavenumbers):
    """Harmonic-oscillator entropy at 298.15 K of the real modes, none below 100 cm^-1, hartree/K."""
    boltzmann = 3.1668115634556e-6
    x = numpy.maximum(wavenumbers[wavenumbers > 10], 100) / 219474.6313632 / (boltzmann * 298.15)
    return float(boltzmann * (x / numpy.expm1(x) - numpy.log1p(-numpy.exp(-x))).sum())


def run(name, method):
    print(name, method, file=sys.stderr, flush=True)
    multiplicity, text = MOLECULES[name]
    grid = BENZENE_GRID if name == "benzene" else (99, 974)
    fixed = FIXED.get((name, method))
    atoms = atoms_of(fixed) if fixed else relaxed(atoms_of(text), multiplicity, method, grid)
    mf = converged(atoms, multiplicity, method, grid)
    n = len(atoms)
    square = hessian_of(mf, sixfold=name == "benzene" and method == "B3LYP").transpose(0, 2, 1, 3).reshape(3 * n, 3 * n)
    square = (square + square.T) / 2  # on a grid the peer's is symmetric to a few digits only
    hessian = square.reshape(n, 3, n, 3).transpose(0, 2, 1, 3)
    mass = numpy.array([WEIGHTS[s] for s, _ in atoms])
    mf.mol.atom_mass_list = lambda isotope_avg=True: mass
    if n > 1:
        modes = thermo.harmonic_analysis(mf.mol, hessian, imaginary_freq=False, mass=mass)
        frequencies, wavenumbers = modes["freq_au"], modes["freq_wavenumber"]
        frequencies = numpy.where(numpy.iscomplex(frequencies), -abs(frequencies), frequencies.real)
    else:
        frequencies = wavenumbers = numpy.zeros(0)
    heat = thermo.thermo(mf, frequencies)
    return {"molecule": name, "method": method, "basis": "6-31G*", "charge": 0, "multiplicity": multiplicity,
            "atoms": [[s, *r] for s, r in atoms], "energy": mf.e_tot,
            "frequencies": [round(float(f), 4) for f in wavenumbers.real],
            "symmetry_number": int(heat["sym_number"][0]),
            "thermo": {key: float(heat[key][0]) for key in
                       ("ZPE", "S_trans", "S_rot", "S_vib", "S_elec", "Cv_trans", "Cv_rot", "Cv_vib", "E_tot", "H_tot", "G_tot")}
            | {"S_quasi": raised_entropy(wavenumbers.real)},
            "hessian": [round(float(square[i, j]), 10) for i in range(3 * n) for j in range(i + 1)]}


wanted = sys.argv[2:]
write_records(run, [c for c in CASES if not wanted or " ".join(c) in wanted])
