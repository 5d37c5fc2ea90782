#!/usr/bin/env python3
"""Writes d3_atomic.dat and d3_c6ref.dat (basis_data/) from the published D3 data that two Python packages ship as arrays.

usage: make_dispersion_data.py [OUTPUT_FOLDER]        (default: basis_data)
       packages: pip install --no-deps tad-dftd3 tad-mctc; numpy

The packages are not imported (they would want an installed PyTorch): the tables are read out of their files.

    reference coordination numbers and C6 coefficients of 338 reference systems, hartree bohr^6:
        Z = 1..86   S. Grimme, J. Antony, S. Ehrlich, H. Krieg, J. Chem. Phys. 132 (2010) 154104
        Z = 87..103 L. Wittmann, I. Gordiy, M. Friede, B. Helmich-Paris, S. Grimme, A. Hansen, M. Bursch,
                    Phys. Chem. Chem. Phys. 26 (2024) 21379
    covalent radii: P. Pyykkoe, M. Atsumi, Chem. Eur. J. 15 (2009) 188, those of metals less 10 %
    <r^4>/<r^2> of the atoms, from which q = sqrt(sqrt(Z) <r^4>/<r^2> / 2): the D3 paper and its extensions
"""
import ast
import importlib.util
import pathlib
import sys
import zipfile

import numpy as np

MAX_Z = 103
BOHR_PER_ANGSTROM = 1.8897261246257702


def folder_of(package):
    spec = importlib.util.find_spec(package)
    if spec is None:
        sys.exit(f"the Python package {package} is not installed")
    return pathlib.Path(spec.submodule_search_locations[0])


def literal_lists(path):
    """All list literals of a source file, outermost first."""
    for node in ast.walk(ast.parse(path.read_text())):
        if isinstance(node, ast.List):
            try:
                yield np.array(ast.literal_eval(node), dtype=float)
            except ValueError:
                continue


def table(path, shape, probe):
    """The list literal of that many dimensions and at least that length in which `probe` holds: (index, value)."""
    index, value = probe
    for found in literal_lists(path):
        if found.ndim == len(shape) and all(n >= m for n, m in zip(found.shape, shape)) and found[index] == value:
            return found
    sys.exit(f"{path}: no such table")


def stored_array(path, shape):
    """An array of doubles out of a saved tensor: a zip file with the raw numbers in row order."""
    with zipfile.ZipFile(path) as archive:
        raw = next(name for name in archive.namelist() if name.endswith("/data/0"))
        return np.frombuffer(archive.read(raw), dtype="<f8").reshape(shape)


def write_atomic(path, radii, q):
    with open(path, "w") as out:
        out.write("# D3 atomic data: atomic number, 4/3 of the covalent radius (bohr), q = sqrt(sqrt(Z) <r^4>/<r^2> / 2) (bohr)\n")
        out.write("# Radii: P. Pyykkoe, M. Atsumi, Chem. Eur. J. 15 (2009) 188, metals less 10 %\n")
        out.write("# q: S. Grimme, J. Antony, S. Ehrlich, H. Krieg, J. Chem. Phys. 132 (2010) 154104, and extensions\n")
        for z in range(1, MAX_Z + 1):
            out.write(f"{z:3d} {4.0 / 3.0 * radii[z] * BOHR_PER_ANGSTROM:.14f} {q[z]:.14f}\n")


def write_references(path, cn, c6):
    systems = [(z, i) for z in range(1, MAX_Z + 1) for i in range(cn.shape[1]) if cn[z, i] >= 0.0]
    with open(path, "w") as out:
        out.write("# D3 reference data: atomic numbers A and B, coordination numbers of the reference systems, C6 (hartree bohr^6)\n")
        out.write("# Z = 1..86: S. Grimme, J. Antony, S. Ehrlich, H. Krieg, J. Chem. Phys. 132 (2010) 154104\n")
        out.write("# Z = 87..103: L. Wittmann et al., Phys. Chem. Chem. Phys. 26 (2024) 21379\n")
        for number, (a, i) in enumerate(systems):
            for b, j in systems[: number + 1]:
                assert c6[a, b, i, j] == c6[b, a, j, i] and c6[a, b, i, j] > 0.0
                out.write(f"{a} {b} {cn[a, i]:.4f} {cn[b, j]:.4f} {float(c6[a, b, i, j])!r}\n")


def main():
    out = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "basis_data")
    d3, mctc = folder_of("tad_dftd3"), folder_of("tad_mctc")
    cn = table(d3 / "reference.py", (MAX_Z + 1, 7), ((6, 4), 3.9844))
    c6 = stored_array(d3 / "reference-c6.pt", (MAX_Z + 1, MAX_Z + 1, 7, 7))
    radii = table(mctc / "data" / "radii.py", (MAX_Z + 1,), (3, 1.20))
    ratio = table(d3 / "data" / "r4r2.py", (MAX_Z + 1,), (1, 8.0589))
    q = np.sqrt(0.5 * np.sqrt(np.arange(len(ratio))) * ratio)
    write_atomic(out / "d3_atomic.dat", radii, q)
    write_references(out / "d3_c6ref.dat", cn, c6)


main()
