#!/usr/bin/env python3
"""Time of a numerical Hessian against 6N times the peer's energy and gradient: benzene/6-31G* restricted Hartree-Fock.

usage: compare_hessian.py [--program build/zentrix] [--threads 2] [--peer-repeats 3]

Ours: the timing profile's Hessian row (reference and 6N displaced runs; every one starts from the reference density). The peer's
energy plus gradient at one displaced geometry (0.005 bohr), started from its density of the reference, energy converged to 1e-9; median.
"""
import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/reference"))

parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
parser.add_argument("--threads", type=int, default=2)
parser.add_argument("--peer-repeats", type=int, default=3)
options = parser.parse_args()
os.environ["OMP_NUM_THREADS"] = str(options.threads)

entry = next(c for c in json.loads((ROOT / "tests/reference/vibrations.json").read_text())
             if c["molecule"] == "benzene" and c["method"] == "HF")
atoms = [(a[0], a[1:]) for a in entry["atoms"]]
with tempfile.TemporaryDirectory() as folder:
    geometry = "\n".join(f"{s} {r[0]} {r[1]} {r[2]}" for s, r in atoms)
    (Path(folder) / "run.inp").write_text(f"%job freq\n%basis 6-31G*\n%print_time\n%geo\n{geometry}\n*end\n")
    report = subprocess.run([os.path.abspath(options.program), "run.inp"], cwd=folder, capture_output=True, text=True,
                            env=dict(os.environ, ZENTRIX=str(ROOT))).stdout
ours = float(re.search(r"Hessian total \(\*\*\) +\d+ +([\d.]+)", report)[1])

from pyscf import scf  # noqa: E402

from common import BOHR, molecule  # noqa: E402


def mean_field(shift):
    there = [(s, [r[0] + (shift / BOHR if a == 0 else 0.0), *r[1:]]) for a, (s, r) in enumerate(atoms)]
    mf = scf.RHF(molecule(ROOT / "basis_data", there, "6-31G*", False))
    mf.conv_tol, mf.conv_tol_grad = 1e-9, 1e-7
    return mf


reference = mean_field(0.0)
reference.kernel()
density = reference.make_rdm1()
times = []
for repeat in range(options.peer_repeats):
    start = time.time()
    mf = mean_field(0.005 * (1 + repeat % 2))
    mf.kernel(dm0=density)
    mf.nuc_grad_method().kernel()
    times.append(time.time() - start)
peer = 6 * len(atoms) * statistics.median(times)
print(f"Hessian {ours:.1f} s, {6 * len(atoms)} x peer's energy and gradient {peer:.1f} s, ratio {peer / ours:.2f}")
