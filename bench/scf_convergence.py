#!/usr/bin/env python3
"""Iterations and final energies of awkward SCF cases, this program and PySCF side by side, both with their defaults.

usage: scf_convergence.py [--program build/zentrix] [--method HF] [--folder XYZ_FOLDER] [--basis def2-SVP] [--no-peer] > table.md

Cases: the list below and, with --folder, every .xyz file there (charge and multiplicity on its title line). The peer reads this
program's basis files; its iteration limit is 150 as here. A difference is this program's energy minus the peer's, hartree:
negative means a lower state here.
"""
import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/reference"))

# name: (charge, multiplicity, basis, spherical, geometry in angstrom)
CASES = {
    "N2 at 2.0 A": (0, 1, "cc-pVDZ", True, "N 0 0 0; N 0 0 2.0"),
    "F2 at 2.5 A": (0, 1, "6-31G*", False, "F 0 0 0; F 0 0 2.5"),
    "LiF at 4 A": (0, 1, "6-31+G*", False, "Li 0 0 0; F 0 0 4.0"),
    "H2O, bonds at 1.9 A": (0, 1, "6-31G*", False, "O 0 0 0; H 1.9 0 0; H -0.5 1.833 0"),
    "C2": (0, 1, "cc-pVDZ", True, "C 0 0 0; C 0 0 1.2425"),
    "O3": (0, 1, "6-31G*", False, "O 0 0 0.4436; O 0 1.0885 -0.2218; O 0 -1.0885 -0.2218"),
    "BeO": (0, 1, "6-31G*", False, "Be 0 0 0; O 0 0 1.33"),
    "CN": (0, 2, "6-31G*", False, "C 0 0 0; N 0 0 1.1718"),
    "NO": (0, 2, "cc-pVDZ", True, "N 0 0 0; O 0 0 1.1508"),
    "O2": (0, 3, "6-31G*", False, "O 0 0 0; O 0 0 1.2075"),
    "OH": (0, 2, "6-311++G**", False, "O 0 0 0; H 0 0 0.9697"),
    "CH3": (0, 2, "6-31G*", False, "C 0 0 0; H 1.079 0 0; H -0.5395 0.934441 0; H -0.5395 -0.934441 0"),
    "NH2": (0, 2, "cc-pVDZ", True, "N 0 0 0.1416; H 0 0.8034 -0.4957; H 0 -0.8034 -0.4957"),
    "NO2": (0, 2, "6-31G*", False, "N 0 0 0.3233; O 0 1.0993 -0.1414; O 0 -1.0993 -0.1414"),
    "SO": (0, 3, "def2-SVP", True, "S 0 0 0; O 0 0 1.4811"),
    "O2-": (-1, 2, "aug-cc-pVDZ", True, "O 0 0 0; O 0 0 1.35"),
    "H2O+": (1, 2, "6-31G**", False, "O 0 0 0.1173; H 0 0.82 -0.4692; H 0 -0.82 -0.4692"),
    "C2H4+": (1, 2, "6-31G*", False, "C 0 0 0.7; C 0 0 -0.7; H 0 0.94 1.25; H 0 -0.94 1.25; H 0 0.94 -1.25; H 0 -0.94 -1.25"),
    "F-": (-1, 1, "aug-cc-pVTZ", True, "F 0 0 0"),
    "OH-": (-1, 1, "6-31++G**", False, "O 0 0 0; H 0 0 0.964"),
    "NO3-": (-1, 1, "6-31+G*", False, "N 0 0 0; O 1.26 0 0; O -0.63 1.091192 0; O -0.63 -1.091192 0"),
    "SO4 2-": (-2, 1, "6-31+G*", False, "S 0 0 0; O 0.86 0.86 0.86; O 0.86 -0.86 -0.86; O -0.86 0.86 -0.86; O -0.86 -0.86 0.86"),
    "CuCl": (0, 1, "def2-SVP", True, "Cu 0 0 0; Cl 0 0 2.051"),
    "CuCl2": (0, 2, "def2-SVP", True, "Cu 0 0 0; Cl 0 0 2.035; Cl 0 0 -2.035"),
    "MnF2, high spin": (0, 6, "def2-SVP", True, "Mn 0 0 0; F 0 0 1.81; F 0 0 -1.81"),
    "FeO, quintet": (0, 5, "def2-SVP", True, "Fe 0 0 0; O 0 0 1.616"),
    "TiO, triplet": (0, 3, "def2-SVP", True, "Ti 0 0 0; O 0 0 1.62"),
    "Cr atom, septet": (0, 7, "def2-SVP", True, "Cr 0 0 0"),
    "Li7 chain": (0, 2, "3-21G", False, "; ".join(f"Li {2.9 * k} 0 0" for k in range(7))),
    "p-benzyne": (0, 1, "6-31G*", False, "C 0 0 1.30; C 0 0 -1.30; C 1.21 0 0.73; C -1.21 0 0.73; C 1.21 0 -0.73; C -1.21 0 -0.73; "
                                         "H 2.15 0 1.27; H -2.15 0 1.27; H 2.15 0 -1.27; H -2.15 0 -1.27"),
}


def cases_of(arguments):
    cases = dict(CASES)
    for path in sorted(Path(arguments.folder).glob("*.xyz")) if arguments.folder else []:
        lines = path.read_text().split("\n")
        charge, multiplicity = (int(x) for x in re.findall(r"-?\d+", lines[1])[-2:])
        cases[path.stem] = (charge, multiplicity, arguments.basis, True, "; ".join(lines[2:2 + int(lines[0])]))
    return cases


def ours(arguments, case):
    charge, multiplicity, basis, spherical, geometry = case
    text = (f"%method {arguments.method}\n%basis {basis}\n%spherical {'yes' if spherical else 'no'}\n%charge {charge}\n"
            f"%mult {multiplicity}\n%geo\n" + geometry.replace(";", "\n") + "\n*end\n")
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(text)
        file.flush()
        report = subprocess.run([arguments.program, file.name], capture_output=True, text=True, cwd=ROOT).stdout
    last = re.findall(r"SCF (NOT converged after|converged in) (\d+) iter", report)
    energy = re.findall(r"Total energy: +(\S+)", report)
    if not last:
        return None, 0, report[-200:]
    return float(energy[-1]), int(last[-1][1]), last[-1][0] == "converged in"


def peer(arguments, case):
    from pyscf import dft, scf

    from common import atoms_of, molecule
    charge, multiplicity, basis, spherical, geometry = case
    mol = molecule(ROOT / "basis_data", atoms_of(geometry), basis, spherical, charge, multiplicity)
    if arguments.method.upper() == "HF":
        mf = (scf.RHF if multiplicity == 1 else scf.UHF)(mol)
    else:
        mf = (dft.RKS if multiplicity == 1 else dft.UKS)(mol)
        mf.xc = arguments.method.lower()
    mf.max_cycle = 150
    energy = mf.kernel()
    return energy, mf.cycles, mf.converged


parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
parser.add_argument("--method", default="HF")
parser.add_argument("--folder")
parser.add_argument("--basis", default="def2-SVP")
parser.add_argument("--no-peer", action="store_true")
options = parser.parse_args()
print("| molecule | basis | iterations | energy | peer's iterations | difference |\n|---|---|---|---|---|---|", flush=True)
for name, case in cases_of(options).items():
    energy, iterations, converged = ours(options, case)
    row = f"| {name} | {case[2]} | {iterations}{'' if converged is True else ' (not converged)'} | {energy} |"
    if not options.no_peer:
        other, cycles, peer_converged = peer(options, case)
        row += f" {cycles}{'' if peer_converged else ' (not converged)'} | {energy - other:.1e} |" if energy else " | |"
    print(row, flush=True)
