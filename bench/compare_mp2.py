#!/usr/bin/env python3
"""MP2 correlation energies of this program and PySCF side by side: time after the SCF, and peak memory.

usage: compare_mp2.py [--program build/zentrix] [--threads 2] [--repeat 3] [CASE ...]

Same geometry, basis files, threads, frozen core. Stored: both keep all integrals of the SCF in memory and transform them. Direct: neither
has them; this program computes them as it goes, the peer writes them to disk (its outcore transformation). The time of this program is the
stage "MP2 correlation" of its timing profile, the peer's that of mp.MP2(mf).kernel(). Both sides run alternately, each in a process
of its own; given are medians, of the processor time of all threads too, which a busy machine disturbs less. Peak memory is that of the whole process, SCF included.
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
BENZENE = "; ".join(f"{s} {r * c:.6f} {r * q:.6f} 0" for s, r in (("C", 1.3915), ("H", 2.4715)) for c, q in
                    ((1, 0), (0.5, 0.8660254), (-0.5, 0.8660254), (-1, 0), (-0.5, -0.8660254), (0.5, -0.8660254)))

# name: (geometry in angstrom, basis, spherical functions, frozen orbitals, memory limit in MB)
CASES = {
    "benzene/6-31G*": (BENZENE, "6-31G*", False, 6, 12000),
    "benzene/cc-pVDZ": (BENZENE, "cc-pVDZ", True, 6, 12000),
    "benzene/cc-pVTZ": (BENZENE, "cc-pVTZ", True, 6, 12000),
    "benzene/cc-pVDZ/direct": (BENZENE, "cc-pVDZ", True, 6, 150),
    "benzene/cc-pVTZ/direct": (BENZENE, "cc-pVTZ", True, 6, 400),
}


def run(command):
    """Standard output of a command and its peak memory, MB."""
    process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True, cwd=ROOT)
    text = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    if os.waitstatus_to_exitcode(status) not in (0, 3):  # 3: the SCF was not to converge
        sys.exit(f"{' '.join(command)}: status {status}\n{text[-2000:]}")
    return text, usage.ru_maxrss / 1024


def ours(program, name, cycles):
    geometry, basis, spherical, frozen, limit = CASES[name]
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(f"%method mp2\n%basis {basis}\n%spherical {'yes' if spherical else 'no'}\n%frozen_core {frozen}\n"
                   f"%eri_memory_limit_mb {limit}\n%scf_maxiter {cycles}\n%print_time\n%geo\n" + geometry.replace(";", "\n") + "\n*end\n")
        file.flush()
        report, peak = run([program, file.name])
    stage = re.search(r"MP2 correlation +1 +([\d.]+) +([\d.]+)", report)
    return {"time": float(stage[1]), "cpu": float(stage[2]), "peak": peak,
            "energy": float(re.search(r"MP2 correlation: +(\S+)", report)[1])}


def peer(name, cycles):
    text, peak = run([sys.executable, __file__, "--peer", name, "--cycles", str(cycles)])
    return json.loads(text.splitlines()[-1]) | {"peak": peak}


def peer_child(name, cycles):
    from pyscf import mp, scf

    from common import atoms_of, molecule
    geometry, basis, spherical, frozen, limit = CASES[name]
    mol = molecule(ROOT / "basis_data", atoms_of(geometry), basis, spherical)
    mol.max_memory = limit
    mf = scf.RHF(mol)
    mf.max_memory, mf.max_cycle = limit, cycles
    mf.kernel()
    post = mp.MP2(mf, frozen=frozen)
    post.max_memory = limit
    begin, begin_cpu = time.monotonic(), time.process_time()
    post.kernel()
    print(json.dumps({"time": time.monotonic() - begin, "cpu": time.process_time() - begin_cpu, "energy": float(post.e_corr), "incore": mf._eri is not None}))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("cases", nargs="*", help=", ".join(CASES))
    parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--repeat", type=int, default=3)
    parser.add_argument("--cycles", type=int, default=150, help="SCF iterations; with a few, times mean the same and energies nothing")
    parser.add_argument("--peer", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.peer:
        peer_child(options.peer, options.cycles)
        return
    os.environ["OMP_NUM_THREADS"] = str(options.threads)
    print(f"{'case':26s} {'ours s':>8s} {'peer s':>8s} {'ratio':>6s} {'cpu s':>8s} {'peer':>8s} {'ratio':>6s} {'ours MB':>8s} {'peer MB':>8s}"
          "   difference of the energies")
    for name in options.cases or CASES:
        pairs = [(ours(options.program, name, options.cycles), peer(name, options.cycles)) for _ in range(options.repeat)]
        median = [statistics.median(p[side]["time"] for p in pairs) for side in (0, 1)]
        cpu = [statistics.median(p[side]["cpu"] for p in pairs) for side in (0, 1)]
        peak = [statistics.median(p[side]["peak"] for p in pairs) for side in (0, 1)]
        kept = "integrals of the SCF" if pairs[0][1]["incore"] else "none stored"
        print(f"{name:26s} {median[0]:8.2f} {median[1]:8.2f} {median[1] / median[0]:6.2f} {cpu[0]:8.2f} {cpu[1]:8.2f} {cpu[1] / cpu[0]:6.2f} {peak[0]:8.0f} {peak[1]:8.0f}   "
              f"{pairs[0][0]['energy'] - pairs[0][1]['energy']:.1e}  (peer: {kept})", flush=True)


if __name__ == "__main__":
    main()
