#!/usr/bin/env python3
"""Exchange-correlation kernels beside libxc (as PySCF calls it): same points, one thread, in one run.

usage: compare_xc.py BUILD_FOLDER [--repeat N] [METHOD ...]

Printed are nanoseconds per point, medians of N alternating measurements, for energy and first derivatives and for second
derivatives as well, and the largest relative difference of the summed energies. libxc gets 20 copies of the 1000 points at
once, so that the calls through Python do not show.
"""
import argparse
import json
import os
import statistics
import subprocess
import time
from pathlib import Path

os.environ["OMP_NUM_THREADS"] = "1"  # before PySCF reads it

METHODS = {"SVWN": "LDA,VWN", "BLYP": "B88,LYP", "PBE": "PBE,PBE", "BP86": "B88,P86", "BPW91": "B88,PW91",
           "B3LYP": "0.08*LDA+0.72*B88,0.19*VWN+0.81*LYP", "PBE0": "0.75*PBE,PBE", "R2SCAN": "R2SCAN,R2SCAN"}
POINTS, COPIES = 1000, 20


def points():
    """The points of bench_xc.cpp in PySCF's layout (spin, variable, point)."""
    import numpy as np
    p = np.arange(POINTS)
    sequence = lambda step: np.fmod((p + 1) * step, 1.0)
    total = 10 ** (-6 + 7 * sequence(0.6180339887498949))
    share = 0.2 + 0.6 * sequence(0.7548776662466927)
    s = 0.05 * 100 ** sequence(0.5698402909980532)
    alpha = 0.01 * 1000 ** sequence(0.8191725133961645)
    spins = []
    for part in (share, 1 - share):
        rho = total * part
        length = s * 7.8 * rho ** (4 / 3)
        spins.append([rho, length, 0 * rho, 0 * rho, length**2 / (8 * rho) + alpha * 4.5578 * rho ** (5 / 3)])
    return np.tile(np.array(spins), (1, 1, COPIES))


def peer(method, rho, channels, order):
    """ns per point, and the sum of the energies over one copy."""
    from pyscf.dft import libxc
    name = METHODS[method]
    n = {"LDA": 1, "GGA": 4, "MGGA": 5}[libxc.xc_type(name)]
    density = rho[:, :n].copy() if channels == 2 else rho.sum(axis=0)[:n].copy()
    begin = time.perf_counter()
    energy = libxc.eval_xc1(name, density, channels - 1, order)[0]
    elapsed = time.perf_counter() - begin
    return elapsed * 1e9 / (POINTS * COPIES), float((energy * rho[:, 0].sum(axis=0))[:POINTS].sum())


def ours(build, method, channels, order):
    word = f"^{method}/{'closed' if channels == 1 else 'open'}/{'first' if order == 1 else 'second'}$"
    out = subprocess.run([Path(build) / "bench/bench_xc", f"--benchmark_filter={word}", "--benchmark_format=json",
                          "--benchmark_min_time=0.05"], capture_output=True, text=True, check=True).stdout
    row = json.loads(out)["benchmarks"][0]
    return row["real_time"], row["energy_sum"]  # us for 1000 points


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("methods", nargs="*", default=list(METHODS))
    parser.add_argument("--repeat", type=int, default=5)
    options = parser.parse_intermixed_args()
    rho = points()
    print("ns per point                 first derivatives          second derivatives")
    print("method   shell          ours    libxc  ratio        ours    libxc  ratio   energy difference")
    for method in options.methods:
        for channels in (1, 2):
            line, worst = f"{method:8s} {'closed' if channels == 1 else 'open':6s}", 0.0
            for order in (1, 2):
                pairs = [(ours(options.build, method, channels, order), peer(method, rho, channels, order))
                         for _ in range(options.repeat)]
                a, b = (statistics.median(pair[side][0] for pair in pairs) for side in (0, 1))
                worst = max(worst, abs(pairs[0][0][1] / pairs[0][1][1] - 1))
                line += f"   {a:9.1f} {b:8.1f} {b / a:6.1f}"
            print(f"{line}   {worst:.0e}", flush=True)


if __name__ == "__main__":
    main()
