#!/usr/bin/env python3
"""Frequency runs of this program on the cases of tests/reference/vibrations.json: largest deviations from the reference.

usage: check_frequencies.py [--program build/zentrix] [--threads 2] [CASE ...]     (CASE: "water HF", "benzene B3LYP", ...)

Printed per case: number of modes, largest deviation of a frequency (cm^-1), deviation of the zero-point and of the Gibbs energy (hartree),
wall time of the run (s). Density functionals on the ultrafine grid.
"""
import argparse
import json
import os
import re
import subprocess
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def run(program, entry, folder):
    geometry = "\n".join(" ".join(str(x) for x in atom) for atom in entry["atoms"])
    path = Path(folder) / "run.inp"
    path.write_text(f"%job freq\n%method {entry['method']}\n%basis {entry['basis']}\n%mult {entry['multiplicity']}\n%grid ultrafine\n"
                    f"%geo\n{geometry}\n*end\n")
    start = time.time()
    report = subprocess.run([program, "run.inp"], cwd=folder, capture_output=True, text=True, env=dict(os.environ, ZENTRIX=str(ROOT))).stdout
    wall = time.time() - start
    modes = [float(f) for f, kind in re.findall(r"^ +\d+ +(-?[\d.]+) +(imag|vib|TR)$", report, re.M) if kind != "TR"]
    energy = {key: float(re.search(pattern + r" +(-?[\d.]+) Eh", report)[1])
              for key, pattern in (("ZPE", "Zero-point energy:"), ("G_tot", r"Gibbs energy G = H - T\*S:"))}
    return modes, energy, wall


parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
parser.add_argument("--threads", type=int, default=2)
parser.add_argument("cases", nargs="*")
options = parser.parse_args()
os.environ["OMP_NUM_THREADS"] = str(options.threads)
print(f"{'case':28s} {'modes':>5s} {'d(freq)':>9s} {'d(ZPVE)':>9s} {'d(G)':>9s} {'s':>8s}")
for entry in json.loads((ROOT / "tests/reference/vibrations.json").read_text()):
    name = f"{entry['molecule']} {entry['method']}"
    if options.cases and name not in options.cases or len(entry["atoms"]) == 1:
        continue
    with tempfile.TemporaryDirectory() as folder:
        modes, energy, wall = run(os.path.abspath(options.program), entry, folder)
    assert len(modes) == len(entry["frequencies"]), name
    worst = max(abs(a - b) for a, b in zip(modes, entry["frequencies"]))
    print(f"{name:28s} {len(modes):5d} {worst:9.3f} {abs(energy['ZPE'] - entry['thermo']['ZPE']):9.1e}"
          f" {abs(energy['G_tot'] - entry['thermo']['G_tot']):9.1e} {wall:8.1f}", flush=True)
