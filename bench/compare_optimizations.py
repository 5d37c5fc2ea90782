#!/usr/bin/env python3
"""Optimises the molecules of tests/reference/optimizations.json with this program and compares energies and bonds with the minima
that an independent program found from the same start.

usage: compare_optimizations.py [--program build/zentrix] [--coord internal|cart] [--hess full|diag] [NAME...] > table.md
"""
import argparse
import json
import re
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# Covalent radii, angstrom (B. Cordero et al., Dalton Trans. (2008) 2832).
RADII = {"H": 0.31, "B": 0.84, "C": 0.76, "N": 0.71, "O": 0.66, "F": 0.57, "S": 1.05, "Cl": 1.02, "Ti": 1.60, "Zn": 1.22}


def bonds(symbols, positions):
    """Lengths of all pairs nearer than 1.2 times the sum of their radii."""
    lengths = {}
    for i, a in enumerate(positions):
        for j in range(i):
            r = sum((x - y) ** 2 for x, y in zip(a, positions[j])) ** 0.5
            if r < 1.2 * (RADII[symbols[i]] + RADII[symbols[j]]):
                lengths[i, j] = r
    return lengths


def optimize(case, options):
    """Steps, whether converged, energy, positions (angstrom), wall seconds."""
    text = (f"%job opt\n%basis {case['basis']}\n%spherical {'yes' if case['spherical'] else 'no'}\n%charge {case['charge']}\n"
            f"%mult {case['multiplicity']}\n%opt_coord {options.coord}\n%initial_hess {options.hess}\n%geom_maxiter 100\n%geo\n" +
            "".join(f"{s} {x:.10f} {y:.10f} {z:.10f}\n" for s, x, y, z in case["atoms"]) + "*end\n")
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(text)
        file.flush()
        report = subprocess.run([options.program, file.name], capture_output=True, text=True, cwd=ROOT).stdout
    steps = re.findall(r"Optimization (converged in|NOT converged after) (\d+) steps", report)
    rows = re.findall(r"^ +\d+  \w+ +(-?\d+\.\d+) +(-?\d+\.\d+) +(-?\d+\.\d+)$", report.split("geometry (Angstrom):")[-1], re.M)
    positions = [[float(x) for x in row] for row in rows[:len(case["atoms"])]]
    return (int(steps[-1][1]), steps[-1][0] == "converged in", float(re.findall(r"Total energy: +(\S+)", report)[-1]), positions,
            float(re.findall(r"Wall time: +(\S+)", report)[-1]))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
    parser.add_argument("--coord", default="internal")
    parser.add_argument("--hess", default="full")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    print("| molecule | basis | steps | energy, hartree | above the peer | largest bond difference, angstrom |\n|---|---|---|---|---|---|")
    for case in json.loads((ROOT / "tests/reference/optimizations.json").read_text()):
        if options.names and case["molecule"] not in options.names:
            continue
        steps, converged, energy, positions, _ = optimize(case, options)
        symbols = [atom[0] for atom in case["atoms"]]
        expected, found = bonds(symbols, case["optimized"]), bonds(symbols, positions)
        error = max(abs(found[pair] - r) for pair, r in expected.items()) if expected.keys() == found.keys() else float("inf")
        print(f"| {case['molecule']} | {case['basis']} | {steps}{'' if converged else ' (not converged)'} | {energy:.8f} | "
              f"{energy - case['energy']:.1e} | {error:.1e} |", flush=True)


if __name__ == "__main__":
    main()
