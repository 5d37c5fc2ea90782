#!/usr/bin/env python3
"""Whole restricted Hartree-Fock runs of this program and of PySCF, side by side: same molecules, basis, start, threads.

usage: compare_with_peer.py [--program build/zentrix] [--threads N] [--repeat N] [CASE ...]

PySCF (from the Python registry) reads this program's own basis files, starts from the core Hamiltonian as well and converges
its energy to the same tolerance. Runs alternate within one call, so that both sides meet the same machine; printed are medians:

  run    wall time of the whole run, s (ours: the process from start to end; peer's: without the start of Python)
  iter   wall time between two iterations, s
  peak   largest resident memory of the process, MB
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

from samples import BENZENE, CAFFEINE, ROOT, WATER, alkane, input_text

# name: (geometry in angstrom, basis, spherical functions)
CASES = {
    "water/cc-pVTZ": (WATER, "cc-pVTZ", True),
    "benzene/6-31G*": (BENZENE, "6-31G*", False),
    "caffeine/6-31G*": (CAFFEINE, "6-31G*", False),
    "C20H42/6-31G**": (alkane(20), "6-31G**", False),
}


def timed_lines(command, environment):
    """Runs a command; every line of its output with the moment it appeared, wall time and peak memory (MB)."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True, cwd=ROOT, env=environment)
    lines = [(time.monotonic(), line) for line in process.stdout]
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        sys.exit(f"{' '.join(command)}: status {status}\n" + "".join(line for _, line in lines[-20:]))
    return lines, time.monotonic() - begin, usage.ru_maxrss / 1024


def run_ours(program, case, direct, environment):
    geometry, basis, spherical = CASES[case]
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(input_text(geometry, basis=basis, spherical="yes" if spherical else "no", eri_memory_limit_mb=1 if direct else 20000))
        file.flush()
        lines, wall, peak = timed_lines([program, file.name], environment)
    rows = [moment for moment, line in lines if re.match(r" +\d+ +-\d+\.\d+ +-?\d\.\d+e", line)]
    energy = [float(line.split()[-1]) for _, line in lines if "Total energy:" in line][-1]
    mode = any("Falling back to DIRECT" in line for _, line in lines)
    assert mode == direct, f"{case}: expected {'direct' if direct else 'conventional'} mode"
    return {"run": wall, "iter": median_step(rows), "peak": peak, "energy": energy, "iterations": len(rows)}


def run_peer(case, direct, environment):
    lines, _, peak = timed_lines([sys.executable, __file__, "--peer", json.dumps([case, direct])], environment)
    return json.loads(lines[-1][1]) | {"peak": peak}


def peer_child(case, direct):
    from pyscf import scf

    from common import atoms_of, molecule
    geometry, basis, spherical = CASES[case]
    moments = []
    begin = time.monotonic()
    mol = molecule(ROOT / "basis_data", atoms_of(geometry), basis, spherical)
    mol.max_memory = 20000
    mf = scf.RHF(mol)
    mf.init_guess, mf.conv_tol, mf.conv_tol_grad, mf.max_cycle = "1e", 1e-8, 1e-5, 150
    mf.direct_scf = direct
    if direct:
        mf._is_mem_enough = lambda: False  # as the program's memory limit does: recompute although the store would fit
    mf.callback = lambda _: moments.append(time.monotonic())
    mf.kernel()
    print(json.dumps({"run": time.monotonic() - begin, "iter": median_step(moments), "energy": mf.e_tot,
                      "iterations": len(moments)}))


def median_step(moments):
    return statistics.median(b - a for a, b in zip(moments, moments[1:]))


def medians(runs):
    return {key: statistics.median(run[key] for run in runs) for key in runs[0]}


def compare(program, case, repeat, environment, modes):
    for direct in modes:
        ours, peer = [], []
        for _ in range(repeat):
            ours.append(run_ours(program, case, direct, environment))
            peer.append(run_peer(case, direct, environment))
        a, b = medians(ours), medians(peer)
        print(f"{case:16s} {'direct' if direct else 'stored':7s}"
              f" {a['run']:8.2f} {b['run']:8.2f} {b['run'] / a['run']:6.1f}x"
              f" {a['iter']:9.4f} {b['iter']:9.4f} {b['iter'] / a['iter']:6.1f}x"
              f" {a['iterations']:4.0f} {b['iterations']:4.0f} {a['peak']:7.0f} {b['peak']:7.0f}"
              f" {a['energy'] - b['energy']:10.1e}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("cases", nargs="*", metavar="CASE", help=", ".join(CASES))
    parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
    parser.add_argument("--threads", type=int, default=os.cpu_count())
    parser.add_argument("--repeat", type=int, default=3)
    parser.add_argument("--direct", action="store_true", help="leave out the runs that store the integrals")
    parser.add_argument("--peer", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.peer:
        return peer_child(*json.loads(options.peer))
    environment = dict(os.environ, OMP_NUM_THREADS=str(options.threads))
    print(f"{options.threads} threads, medians of {options.repeat} alternating runs; ratios: peer / ours\n")
    print("                            run/s                       iter/s               iterations      peak/MB    energy")
    print("case             mode        ours     peer  ratio      ours      peer  ratio  ours peer    ours    peer  difference")
    for case in options.cases or CASES:
        compare(options.program, case, options.repeat, environment, (True,) if options.direct else (False, True))


if __name__ == "__main__":
    main()
