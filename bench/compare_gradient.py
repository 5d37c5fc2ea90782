#!/usr/bin/env python3
"""Nuclear gradients of this program and of PySCF, side by side: same geometry, basis files, threads, number of grid points.

usage: compare_gradient.py [--program build/zentrix] [--threads 2] [--repeat 3] [--cycles N] [CASE ...]

Runs of the two alternate within one call, so that both sides meet the same machine; printed are medians of elapsed time and, in
parentheses, of processor time over threads, which is the elapsed time of a machine that does nothing else:

  ours   stages "Gradient 1e", "Gradient 2e" and "Gradient DFT" of the timing profile
  peer   the kernel of its gradient method

The density needs no convergence for its derivative to take as long as any other: with --cycles N both SCFs, direct ones, stop
after N iterations. Without, both converge, and the largest difference of the gradients is printed. Our gradients of the
exchange-correlation energy include the change of the grid's weights, the peer's default leaves it out.
"""
import argparse
import os
import re
import statistics
import sys
import time

from samples import BENZENE, CAFFEINE, FORMALDEHYDE, PEER_FUNCTIONALS, ROOT, WATER, input_text, run_program

# name: (geometry in angstrom, method, basis, spherical functions)
CASES = {
    "water/HF/cc-pVTZ": (WATER, "HF", "cc-pVTZ", True),
    "water/B3LYP/6-31G*": (WATER, "B3LYP", "6-31G*", False),
    "benzene/B3LYP/6-31G*": (BENZENE, "B3LYP", "6-31G*", False),
    "formaldehyde/HF/cc-pVTZ": (FORMALDEHYDE, "HF", "cc-pVTZ", True),
    "benzene/HF/cc-pVTZ": (BENZENE, "HF", "cc-pVTZ", True),
    "caffeine/HF/6-31G*": (CAFFEINE, "HF", "6-31G*", False),
    "caffeine/B3LYP/6-31G*": (CAFFEINE, "B3LYP", "6-31G*", False),
    "caffeine/PBE/6-31G*": (CAFFEINE, "PBE", "6-31G*", False),
    "caffeine/HF/cc-pVTZ": (CAFFEINE, "HF", "cc-pVTZ", True),
    "caffeine/B3LYP/cc-pVTZ": (CAFFEINE, "B3LYP", "cc-pVTZ", True),
}


def ours(options, case):
    geometry, method, basis, spherical = CASES[case]
    keywords = dict(job="gradient", method=method, basis=basis, spherical="yes" if spherical else "no", print_time=None)
    if options.cycles:
        keywords |= dict(scf_maxiter=options.cycles, eri_memory_limit_mb=1)
    report = run_program(options.program, input_text(geometry, **keywords))
    stages = {name: (float(wall), float(cpu) / options.threads)
              for name, wall, cpu in re.findall(r"^  Gradient (1e|2e|DFT) +\d+ +([\d.]+) +([\d.]+)", report, re.M)}
    table = re.search(r"Cartesian gradient \(Hartree/Bohr\):\n.*\n((?: +\d+ .*\n)+)", report)
    if not stages or not table:
        sys.exit(report)
    points = re.search(r"Grid points.*: +(\d+)", report)
    return {"wall": sum(t[0] for t in stages.values()), "cpu": sum(t[1] for t in stages.values()), "stages": stages,
            "points": int(points[1]) if points else 0,
            "gradient": [[float(x) for x in line.split()[-3:]] for line in table[1].strip().split("\n")]}


class PEER:
    def __init__(self, options, case, points):
        from pyscf import dft, lib, scf

        from common import atoms_of, molecule
        lib.num_threads(options.threads)
        geometry, method, basis, spherical = CASES[case]
        mol = molecule(ROOT / "basis_data", atoms_of(geometry), basis, spherical)
        mf = scf.RHF(mol) if method == "HF" else dft.RKS(mol)
        if method != "HF":
            mf.xc = PEER_FUNCTIONALS[method]
            mf.grids.atom_grid = (75, 302)
        mf.conv_tol = 1e-9
        if options.cycles:
            mf.max_cycle, mf.max_memory = options.cycles, 2000
        mf.kernel()
        if options.cycles and method != "HF":
            mf.grids.coords, mf.grids.weights = mf.grids.coords[:points], mf.grids.weights[:points]
            mf.grids.non0tab = None
        self.threads, self.points = options.threads, len(mf.grids.weights) if method != "HF" else 0
        self.method = mf.nuc_grad_method()
        self.method.verbose = 0

    def measure(self):
        wall, cpu = time.perf_counter(), time.process_time()
        self.gradient = self.method.kernel()
        return {"wall": time.perf_counter() - wall, "cpu": (time.process_time() - cpu) / self.threads}


def middle(runs, key):
    return statistics.median(run[key] for run in runs)


parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("cases", nargs="*", default=["caffeine/HF/6-31G*", "caffeine/B3LYP/6-31G*", "caffeine/HF/cc-pVTZ"])
parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
parser.add_argument("--threads", type=int, default=2)
parser.add_argument("--repeat", type=int, default=3)
parser.add_argument("--cycles", type=int, default=0)
options = parser.parse_args()
os.environ["OMP_NUM_THREADS"] = str(options.threads)
os.environ["OMP_WAIT_POLICY"] = "passive"
print(f"{'case':24s} {'ours s':>16s} {'peer s':>16s} {'ratio':>16s}")
for case in options.cases:
    own = [ours(options, case)]
    peer = PEER(options, case, own[0]["points"])
    there = []
    for n in range(options.repeat):
        there.append(peer.measure())
        if n + 1 < options.repeat:
            own.append(ours(options, case))
    columns = [f"{w:8.2f} ({c:5.2f})" for w, c in ((middle(own, "wall"), middle(own, "cpu")), (middle(there, "wall"), middle(there, "cpu")))]
    ratio = f"{middle(there, 'wall') / middle(own, 'wall'):8.1f} ({middle(there, 'cpu') / middle(own, 'cpu'):5.1f})"
    notes = ", ".join(f"{name} {statistics.median(run['stages'][name][1] for run in own):.2f}" for name in own[0]["stages"])
    if own[0]["points"]:
        notes += f"; points {own[0]['points']}, peer {peer.points}"
    if not options.cycles:
        difference = max(abs(a - b) for x, y in zip(own[0]["gradient"], peer.gradient) for a, b in zip(x, y))
        notes += f"; largest difference {difference:.0e}"
    print(f"{case:24s} {columns[0]:>16s} {columns[1]:>16s} {ratio:>16s}   ({notes})", flush=True)
