#!/usr/bin/env python3
"""Time of a numerical Hessian against 6N times the peer's energy and gradient: benzene/6-31G*, restricted.

usage: compare_hessian.py [--program build/zentrix] [--method HF|B3LYP] [--threads 2] [--repeat 1] [--peer-repeats 3]

Ours: the whole frequency run, median of --repeat. The peer's energy plus gradient at one displaced geometry (0.005 bohr), started from its density of the
reference, energy converged to 1e-9; median. Elapsed times and, for a busy machine, processor times of all threads. B3LYP at level 6,
the peer's on the same rules (75, 302), pruned its own way; both numbers of points are printed.
"""
import argparse
import json
import os
import re
import resource
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
parser.add_argument("--method", default="HF", choices=["HF", "B3LYP"])
parser.add_argument("--threads", type=int, default=2)
parser.add_argument("--repeat", type=int, default=1)
parser.add_argument("--peer-repeats", type=int, default=3)
options = parser.parse_args()
os.environ["OMP_NUM_THREADS"] = str(options.threads)

entry = next(c for c in json.loads((ROOT / "tests/reference/vibrations.json").read_text())
             if c["molecule"] == "benzene" and c["method"] == "HF")
atoms = [(a[0], a[1:]) for a in entry["atoms"]]
with tempfile.TemporaryDirectory() as folder:
    geometry = "\n".join(f"{s} {r[0]} {r[1]} {r[2]}" for s, r in atoms)
    (Path(folder) / "run.inp").write_text(f"%job freq\n%method {options.method}\n%basis 6-31G*\n%print_time\n%geo\n{geometry}\n*end\n")
    runs = []
    for _ in range(options.repeat):
        before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.time()
        report = subprocess.run([os.path.abspath(options.program), "run.inp"], cwd=folder, capture_output=True, text=True,
                                env=dict(os.environ, ZENTRIX=str(ROOT))).stdout
        spent = resource.getrusage(resource.RUSAGE_CHILDREN)
        runs.append((time.time() - start, spent.ru_utime + spent.ru_stime - before.ru_utime - before.ru_stime))
ours, ours_processor = (statistics.median(column) for column in zip(*runs))
profile = "\n".join(line for line in report.splitlines() if re.match(r"  \w.*[(*)\w] +\d+ +[\d.]+ +[\d.]+ +[\d.]+$", line))
print(profile, flush=True)

from pyscf import dft, scf  # noqa: E402

from common import BOHR, molecule  # noqa: E402


def mean_field(shift):
    there = [(s, [r[0] + (shift / BOHR if a == 0 else 0.0), *r[1:]]) for a, (s, r) in enumerate(atoms)]
    mol = molecule(ROOT / "basis_data", there, "6-31G*", False)
    mf = scf.RHF(mol) if options.method == "HF" else dft.RKS(mol)
    if options.method != "HF":
        mf.xc = "0.2*HF + .08*slater + .72*b88, .19*vwn5 + .81*lyp"
        mf.grids.atom_grid = (75, 302)
    mf.conv_tol, mf.conv_tol_grad = 1e-9, 1e-7
    return mf


reference = mean_field(0.0)
reference.kernel()
density = reference.make_rdm1()
times, processor = [], []
for repeat in range(options.peer_repeats):
    start, clock = time.time(), time.process_time()
    mf = mean_field(0.005 * (1 + repeat % 2))
    mf.kernel(dm0=density)
    mf.nuc_grad_method().kernel()
    times.append(time.time() - start)
    processor.append(time.process_time() - clock)
if options.method != "HF":
    print("grid points:", re.search(r"Grid points.*: +(\d+)", report)[1], "peer", len(mf.grids.weights))
needed = 6 * len(atoms)
peer, peer_processor = needed * statistics.median(times), needed * statistics.median(processor)
print(f"elapsed: {ours:.1f} s, {needed} x peer's energy and gradient {peer:.1f} s, ratio {peer / ours:.2f}")
print(f"processor: {ours_processor:.1f} s, {peer_processor:.1f} s, ratio {peer_processor / ours_processor:.2f}")
