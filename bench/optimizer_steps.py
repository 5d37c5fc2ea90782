#!/usr/bin/env python3
"""Steps that the optimiser needs from the start structures of a folder to their minima, HF/STO-3G.

usage: optimizer_steps.py FOLDER [--program build/zentrix] [--coord internal|cart] [--hess full|diag] [NAME...] > table.md

FOLDER holds energies.tsv (file, charge, multiplicity, energy of the minimum in hartree) and the .xyz files that it names, for
example the set of J. Baker, J. Comput. Chem. 14 (1993) 1085. A step is one energy and gradient.
"""
import argparse
import re
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def optimize(path, charge, multiplicity, options):
    lines = path.read_text().split("\n")
    atoms = [line.split() for line in lines[2:2 + int(lines[0])]]
    text = (f"%job opt\n%basis STO-3G\n%charge {charge}\n%mult {multiplicity}\n%opt_coord {options.coord}\n"
            f"%initial_hess {options.hess}\n%geom_maxiter 100\n%geo\n" +
            "".join(f"{atom[0].capitalize()} {' '.join(atom[1:4])}\n" for atom in atoms) + "*end\n")
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(text)
        file.flush()
        report = subprocess.run([options.program, file.name], capture_output=True, text=True, cwd=ROOT).stdout
    steps = re.findall(r"Optimization (converged in|NOT converged after) (\d+) steps", report)
    if not steps:
        return 0, False, 0.0, 0.0
    return (int(steps[-1][1]), steps[-1][0] == "converged in", float(re.findall(r"Total energy: +(\S+)", report)[-1]),
            float(re.findall(r"Wall time: +(\S+)", report)[-1]))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
    parser.add_argument("--coord", default="internal")
    parser.add_argument("--hess", default="full")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    total = failures = 0
    print("| molecule | steps | energy, hartree | less the published minimum | seconds |\n|---|---|---|---|---|")
    for line in (options.folder / "energies.tsv").read_text().split("\n"):
        if not line or line.startswith("#"):
            continue
        file, charge, multiplicity, minimum = line.split()[:4]
        if options.names and not any(name in file for name in options.names):
            continue
        steps, converged, energy, seconds = optimize(options.folder / file, charge, multiplicity, options)
        total += steps
        # The published energies have five decimals.
        right = converged and abs(energy - float(minimum)) < 2e-5
        failures += not right
        print(f"| {Path(file).stem} | {steps}{'' if right else ' (failed)'} | {energy:.6f} | {energy - float(minimum):.1e} | {seconds:.1f} |",
              flush=True)
    print(f"| all | {total} | | failures: {failures} | |")


if __name__ == "__main__":
    main()
