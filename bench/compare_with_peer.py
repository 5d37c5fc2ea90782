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
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BOHR = 1.8897261246257702

WATER = "O 0 0 0.1173; H 0 0.7572 -0.4692; H 0 -0.7572 -0.4692"
BENZENE = "; ".join(f"{s} {r * c:.6f} {r * q:.6f} 0" for s, r in (("C", 1.3915), ("H", 2.4715)) for c, q in
                    ((1, 0), (0.5, 0.8660254), (-0.5, 0.8660254), (-1, 0), (-0.5, -0.8660254), (0.5, -0.8660254)))
CAFFEINE = "; ".join(re.findall(r"^ *[A-Z] +[-\d.]+ +[-\d.]+ +[-\d.]+", (ROOT / "examples/caffeine.inp").read_text(), re.M))

# name: (geometry in angstrom, basis, spherical functions)
CASES = {
    "water/cc-pVTZ": (WATER, "cc-pVTZ", True),
    "benzene/6-31G*": (BENZENE, "6-31G*", False),
    "caffeine/6-31G*": (CAFFEINE, "6-31G*", False),
}


def atoms_of(case):
    return [(line.split()[0], [float(x) for x in line.split()[1:]]) for line in CASES[case][0].split(";")]


def read_basis(name, symbol):
    """Shells of an element from the program's file, in PySCF's own layout."""
    stem = "".join(c for c in name.replace("**", "dp").replace("*", "d").replace("+", "p") if c not in "(), ").lower()
    shells, block_start, inside = [], True, False
    for line in (ROOT / "basis_data" / f"{stem}.dat").read_text().split("\n"):
        words = line.split()
        if not words or line.startswith("!"):
            continue
        if words[0] == "****":
            if inside:
                break
            block_start = True
        elif block_start:
            inside, block_start = words[0].upper() == symbol.upper(), False
        elif inside and words[0].isalpha():
            current = [["SPDFG".index(c)] for c in words[0].upper()]
            shells += current
        elif inside:
            numbers = [float(w.replace("D", "e")) for w in words]
            for shell, coefficient in zip(current, numbers[1:]):
                shell.append([numbers[0], coefficient])
    return shells


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
    _, basis, spherical = CASES[case]
    geometry = "\n".join(f"{s} {r[0]} {r[1]} {r[2]}" for s, r in atoms_of(case))
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(f"%basis {basis}\n%spherical {'yes' if spherical else 'no'}\n%eri_memory_limit_mb {1 if direct else 20000}\n"
                   f"%geo\n{geometry}\n*end\n")
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
    from pyscf import gto, scf
    _, basis, spherical = CASES[case]
    moments = []
    begin = time.monotonic()
    atoms = [(s, [x * BOHR for x in r]) for s, r in atoms_of(case)]
    mol = gto.M(atom=atoms, unit="Bohr", cart=not spherical, verbose=0, max_memory=20000,
                basis={s: read_basis(basis, s) for s, _ in atoms})
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


def compare(program, case, repeat, environment):
    for direct in (False, True):
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
    parser.add_argument("--peer", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.peer:
        return peer_child(*json.loads(options.peer))
    environment = dict(os.environ, OMP_NUM_THREADS=str(options.threads))
    print(f"{options.threads} threads, medians of {options.repeat} alternating runs; ratios: peer / ours\n")
    print("                            run/s                       iter/s               iterations      peak/MB    energy")
    print("case             mode        ours     peer  ratio      ours      peer  ratio  ours peer    ours    peer  difference")
    for case in options.cases or CASES:
        compare(options.program, case, options.repeat, environment)


if __name__ == "__main__":
    main()
