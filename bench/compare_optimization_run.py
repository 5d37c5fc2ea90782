#!/usr/bin/env python3
"""A whole geometry optimisation of this program and of PySCF with geomeTRIC, side by side, HF/STO-3G.

usage: compare_optimization_run.py STRUCTURE.xyz [--program build/zentrix] [--threads 2] [--repeat 3]

Both start from the same structure (neutral, closed shell) with their defaults, in turn; ours is the process from start to end, the peer's
leaves out the start of Python. Printed are medians, the numbers of energies and gradients, and the difference of the minima.
"""
import argparse
import contextlib
import io
import os
import re
import statistics
import time
from pathlib import Path

from samples import ROOT, input_text, run_program


def ours(program, geometry):
    start = time.monotonic()
    report = run_program(program, input_text(geometry, job="opt", basis="STO-3G"))
    wall = time.monotonic() - start
    return wall, int(re.search(r"Optimization converged in (\d+) steps", report)[1]), float(re.findall(r"Total energy: +(\S+)", report)[-1])


def peer(geometry, threads):
    from pyscf import lib, scf
    from pyscf.geomopt.geometric_solver import kernel

    from common import atoms_of, molecule
    lib.num_threads(threads)
    start = time.monotonic()
    scanner = scf.RHF(molecule(ROOT / "basis_data", atoms_of(geometry), "STO-3G", False)).nuc_grad_method().as_scanner()
    steps = 0

    def count(_):
        nonlocal steps
        steps += 1

    with contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(io.StringIO()):
        converged, _ = kernel(scanner, callback=count)
    assert converged
    return time.monotonic() - start, steps, scanner.e_tot


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("structure", type=Path)
    parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--repeat", type=int, default=3)
    options = parser.parse_args()
    os.environ["OMP_NUM_THREADS"] = str(options.threads)
    lines = options.structure.read_text().split("\n")
    geometry = "; ".join(lines[2:2 + int(lines[0])])
    pairs = [(ours(options.program, geometry), peer(geometry, options.threads)) for _ in range(options.repeat)]
    here, there = (statistics.median(p[side][0] for p in pairs) for side in (0, 1))
    (_, steps, energy), (_, peer_steps, peer_energy) = pairs[0]
    print(f"{options.structure.stem}: ours {here:.1f} s ({steps} steps), peer {there:.1f} s ({peer_steps} steps), ratio {there / here:.1f}; "
          f"minimum {energy:.7f}, less the peer's {energy - peer_energy:.0e} hartree")


if __name__ == "__main__":
    main()
