#!/usr/bin/env python3
"""One exchange-correlation build (energy and matrix) and whole Kohn-Sham runs of caffeine, this program and PySCF side by side.

usage: compare_dft.py [--program build/zentrix] [--threads 2] [--methods SVWN PBE R2SCAN B3LYP] [--bases 6-31G* 6-311G**]
                      [--spins restricted unrestricted] [--cycles N] [--repeat 1]

Same geometry, basis files, threads, default memory limits. Our build time is the timing profile's exchange-correlation stage over its
calls, the first one with its evaluation of the basis functions that later ones reuse included. The peer's is nr_rks / nr_uks on as
many points as our grid has, after a warm-up. The whole run of the peer uses its (75, 302) grid pruned its own way; the energies of
both sides converge to 1e-8 hartree. With --cycles N both SCFs stop after N iterations: builds take as long as at the end, and the
times of the runs, which mean nothing, are left out. With --repeat N runs and builds of the two sides alternate N times and medians
are given, each of its own column.
"""
import argparse
import os
import re
import statistics
import time

from samples import CAFFEINE, PEER_FUNCTIONALS, ROOT, input_text, run_program


def ours(options, method, basis, spin):
    start = time.time()
    few = {"scf_maxiter": options.cycles, "eri_memory_limit_mb": 1} if options.cycles else {}
    report = run_program(options.program, input_text(CAFFEINE, method=method, basis=basis, spin=spin, print_time=None, **few))
    wall = time.time() - start
    stage = re.search(r"DFT XC \(grid integration\) +(\d+) +([\d.]+)", report)
    return {"wall": wall, "calls": int(stage[1]), "xc": float(stage[2]), "points": int(re.search(r"Grid points.*: +(\d+)", report)[1]),
            "energy": float(re.findall(r"Total energy: +(\S+)", report)[-1])}


def converged(method, basis, spin):
    """The peer's SCF and the time that it took."""
    from pyscf import dft

    from common import atoms_of, molecule
    mf = (dft.RKS if spin == "restricted" else dft.UKS)(molecule(ROOT / "basis_data", atoms_of(CAFFEINE), basis, False))
    mf.xc = PEER_FUNCTIONALS[method]
    mf.grids.atom_grid = (75, 302)
    if options.cycles:
        mf.max_cycle = options.cycles
    start = time.time()
    mf.kernel()
    return mf, time.time() - start


def build_time(mf, spin, points):
    """Time of the peer's second build on the first points of its grid."""
    mf.grids.coords, mf.grids.weights = mf.grids.coords[:points], mf.grids.weights[:points]
    mf.grids.non0tab = None
    build = mf._numint.nr_rks if spin == "restricted" else mf._numint.nr_uks
    dm = mf.make_rdm1()
    for _ in range(2):
        start = time.time()
        build(mf.mol, mf.grids, mf.xc, dm)
    return time.time() - start


parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
parser.add_argument("--threads", type=int, default=2)
parser.add_argument("--methods", nargs="+", default=["SVWN", "PBE", "R2SCAN", "B3LYP"])
parser.add_argument("--bases", nargs="+", default=["6-31G*", "6-311G**"])
parser.add_argument("--spins", nargs="+", default=["restricted"])
parser.add_argument("--cycles", type=int, default=0)
parser.add_argument("--repeat", type=int, default=1)
options = parser.parse_args()
os.environ["OMP_NUM_THREADS"] = str(options.threads)
print(f"{'case':32s} {'points':>7s} {'XC s':>7s} {'peer':>7s} {'ratio':>6s}   {'run s':>7s} {'peer':>7s} {'ratio':>6s}")
for basis in options.bases:
    for method in options.methods:
        for spin in options.spins:
            here, there, builds, mf = [], [], [], None
            for _ in range(options.repeat):
                here.append(ours(options, method, basis, spin))
                if mf is None or not options.cycles:
                    mf, wall = converged(method, basis, spin)
                    there.append(wall)
                builds.append(build_time(mf, spin, here[0]["points"]))
            mean, build = statistics.median(run["xc"] / run["calls"] for run in here), statistics.median(builds)
            line = f"{method + ' ' + basis + ' ' + spin:32s} {here[0]['points']:7d} {mean:7.3f} {build:7.3f} {build / mean:6.2f}   "
            if not options.cycles:
                wall, peer_wall = statistics.median(run["wall"] for run in here), statistics.median(there)
                line += (f"{wall:7.2f} {peer_wall:7.2f} {peer_wall / wall:6.2f}   "
                         f"({mf.cycles} cycles of the peer; difference {here[0]['energy'] - mf.e_tot:.1e})")
            print(line, f"({len(mf.grids.weights)} points of the peer's builds)", flush=True)
