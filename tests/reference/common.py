"""What the scripts that make references share: this program's basis files in PySCF's layout, geometries, mean fields, records."""
import json
from pathlib import Path

from pyscf import dft, gto, scf

BOHR = 1.8897261246257702
B3LYP = "0.2*HF + .08*slater + .72*b88, .19*vwn5 + .81*lyp"


def file_stem(name):
    if "(P)" in name:
        return name.lower()
    stem = name.replace("**", "dp").replace("*", "d").replace("+", "p")
    return "".join(c for c in stem if c not in "(), ").lower()


def read_basis(folder, name, symbol):
    """Shells of an element in PySCF's own layout, from the program's file."""
    shells, block_start, inside = [], True, False
    for line in (Path(folder) / f"{file_stem(name)}.dat").read_text().split("\n"):
        words = line.replace("D", "e").split() if inside and line[:1] == " " else line.split()
        if not words or line.startswith("!"):
            continue
        if words[0].startswith("****"):
            if inside:
                break
            block_start = True
        elif block_start:
            inside, block_start = words[0].upper() == symbol.upper(), False
        elif inside and words[0].upper().isalpha():
            current = [["SPDFG".index(c)] for c in words[0].upper()]
            shells += current
        elif inside:
            for k, shell in enumerate(current):
                shell.append([float(words[0]), float(words[k + 1])])
    assert shells, (name, symbol)
    return shells


def atoms_of(text):
    """"O 0 0 0; H 0 0 1" -> [("O", [0, 0, 0]), ...], angstrom."""
    return [(line.split()[0], [float(x) for x in line.split()[1:]]) for line in text.split(";")]


def read_xyz(path):
    lines = Path(path).read_text().splitlines()
    return [(w[0], [float(x) for x in w[1:4]]) for w in (line.split() for line in lines[2 : 2 + int(lines[0])])]


def molecule(folder, atoms, basis, spherical, charge=0, multiplicity=1):
    """The peer's molecule with this program's basis numbers and factor from angstrom to bohr."""
    return gto.M(atom=[(s, [x * BOHR for x in r]) for s, r in atoms], unit="Bohr", charge=charge, spin=multiplicity - 1,
                 cart=not spherical, verbose=0, basis={s: read_basis(folder, basis, s) for s, _ in atoms})


def mean_field(mol, xc=None, grid=None, **settings):
    """Restricted for singlets, unrestricted for others; with a functional Kohn-Sham on an unpruned (radial, angular) grid."""
    if xc is None:
        mf = (scf.RHF if mol.spin == 0 else scf.UHF)(mol)
    else:
        mf = (dft.RKS if mol.spin == 0 else dft.UKS)(mol, xc=xc)
        mf.grids.atom_grid, mf.grids.prune = grid, None
    for name, value in settings.items():
        setattr(mf, name, value)
    return mf


def head(name, basis, spherical, charge, multiplicity, atoms):
    """What the record of a molecule begins with."""
    return {"molecule": name, "basis": basis, "spherical": spherical, "charge": charge, "multiplicity": multiplicity,
            "atoms": [[s, *r] for s, r in atoms]}


def write_records(run, cases):
    """The list of run(*case), a record a line."""
    for number, case in enumerate(cases):
        print("[" if number == 0 else ",", json.dumps(run(*case)), flush=True)
    print("]")


def lowest_unrestricted(mol, conv_tol_grad=1e-5):
    """The lowest of the stable unrestricted solutions that three starts lead to."""
    solutions = []
    for guess in ("minao", "atom", "1e"):
        mf = scf.UHF(mol)
        mf.conv_tol, mf.conv_tol_grad, mf.direct_scf_tol, mf.max_cycle = 1e-11, conv_tol_grad, 1e-15, 300
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
        solutions.append(mf)
    return min(solutions, key=lambda solution: solution.e_tot)
