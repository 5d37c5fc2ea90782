#!/usr/bin/env python3
"""Transition-state searches: steps, energies and imaginary modes, as a table.

usage: transition_states.py [--program build/zentrix] [--folder XYZ_FOLDER] [--only NAME ...] > table.md

Runs `%job ts+freq` from the published start structures of XYZ_FOLDER (HF/3-21G; its energies.tsv holds charge, multiplicity and
the published energy of every file) and from the starts below. A difference is this program's energy minus the published one.
"""
import argparse
import os
import re
import subprocess
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent

AMMONIA = "N 0 0 0.02; H 0 0.99 0; H 0.857 -0.495 0; H -0.857 -0.495 0"
ETHANE = ("C 0 0 0.765; C 0 0 -0.765; H 1.02 0 1.16; H -0.51 0.8833 1.16; H -0.51 -0.8833 1.16; "
          "H 1.01 0.15 -1.16; H -0.635 0.80 -1.16; H -0.375 -0.95 -1.16")
SUBSTITUTION = "C 0 0 0.05; F 0 0 -2.0; Cl 0 0 2.2; H 1.07 0 0; H -0.535 0.9266 0; H -0.535 -0.9266 0"
# name: (charge, multiplicity, method, basis, geometry in angstrom)
CASES = {
    f"{name}, {method}": (charge, 1, method, basis, geometry)
    for method in ("HF", "B3LYP")
    for name, charge, basis, geometry in (("ammonia inversion", 0, "6-31G*", AMMONIA), ("ethane rotation", 0, "6-31G*", ETHANE),
                                          ("F- + CH3Cl substitution", -1, "6-31+G*", SUBSTITUTION))
}


def cases_of(arguments):
    cases = {name: (*case, None) for name, case in CASES.items()}
    if arguments.folder:
        for line in (Path(arguments.folder) / "energies.tsv").read_text().split("\n"):
            if not line or line.startswith("#"):
                continue
            file, charge, multiplicity, energy = line.split("\t")
            lines = (Path(arguments.folder) / file).read_text().split("\n")
            geometry = "; ".join(lines[2:2 + int(lines[0])])
            cases[Path(file).stem] = (int(charge), int(multiplicity), "HF", "3-21G", geometry, float(energy))
    return {name: case for name, case in cases.items() if not arguments.only or name in arguments.only}


def run(arguments, case):
    charge, multiplicity, method, basis, geometry, _ = case
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "ts.inp"
        path.write_text(f"%job ts+freq\n%method {method}\n%basis {basis}\n%charge {charge}\n%mult {multiplicity}\n"
                        f"%geom_maxiter 100\n%geo\n" + geometry.replace(";", "\n") + "\n*end\n")
        start = time.time()
        report = subprocess.run([str(Path(arguments.program).resolve()), str(path)], capture_output=True, text=True,
                                cwd=folder, env={**os.environ, "ZENTRIX": str(ROOT), "OMP_WAIT_POLICY": "passive"})
        return report.stdout, time.time() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
    parser.add_argument("--folder")
    parser.add_argument("--only", nargs="*")
    arguments = parser.parse_args()
    print("| structure | steps | energy (hartree) | published | difference | imaginary modes (cm^-1) | time (s) |")
    print("|---|---|---|---|---|---|---|")
    for name, case in cases_of(arguments).items():
        report, seconds = run(arguments, case)
        steps = re.findall(r"search (converged in|NOT converged after) (\d+) steps", report)
        if not steps:
            print(f"| {name} | failed: {report.strip().splitlines()[-1]} |", flush=True)
            continue
        energy = float(re.findall(r"Final energy: +(\S+)", report)[-1])
        published = case[5]
        imaginary = re.findall(r"^ +\d+ +(-\d+\.\d+) .*imag", report, re.MULTILINE)
        print(f"| {name} | {steps[-1][1]}{'' if steps[-1][0].startswith('conv') else ' (not converged)'} | {energy:.6f} | "
              f"{'' if published is None else f'{published:.5f}'} | {'' if published is None else f'{energy - published:+.5f}'} | "
              f"{', '.join(imaginary)} | {seconds:.1f} |", flush=True)


if __name__ == "__main__":
    main()
