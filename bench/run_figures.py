#!/usr/bin/env python3
"""Figures of this program by itself: start-up, gain of a second thread, memory of direct runs. No peer needed.

usage: run_figures.py [--program build/zentrix] [--repeat N] [startup] [threads] [memory]

  startup  time from the start of the process to the first line of the iteration table, water/6-31G*, median
  threads  direct B3LYP run of caffeine/6-31G*: stages of the timing profile on one thread over those on two, median
  memory   largest resident memory of direct runs above that of water, in matrices of N^2 doubles, all-anti alkanes in 6-31G**, per
           number of threads
"""
import argparse
import os
import re
import statistics
import subprocess
import tempfile
import time

from samples import CAFFEINE, ROOT, WATER, alkane, input_text


def run(text, threads):
    """Lines of a report with the seconds at which they came, and the peak memory in MB."""
    with tempfile.NamedTemporaryFile("w", suffix=".inp") as file:
        file.write(text)
        file.flush()
        begin = time.monotonic()
        process = subprocess.Popen([options.program, file.name], stdout=subprocess.PIPE, text=True, cwd=tempfile.gettempdir(),
                                   env=dict(os.environ, ZENTRIX=str(ROOT), OMP_NUM_THREADS=str(threads)))
        lines = [(time.monotonic() - begin, line) for line in process.stdout]
        _, status, usage = os.wait4(process.pid, 0)
    assert status == 0, "".join(line for _, line in lines[-10:])
    return lines, usage.ru_maxrss / 1024


def startup():
    times = []
    for _ in range(max(options.repeat, 9)):
        lines, _ = run(input_text(WATER, basis="6-31G*"), 2)
        times.append(next(moment for moment, line in lines if re.match(r" +1 +-\d+\.\d+ +-?\d\.\d+e", line)))
    print(f"start-up of water/6-31G* to the first iteration: {1000 * statistics.median(times):.0f} ms")


def threads():
    text = input_text(CAFFEINE, method="B3LYP", basis="6-31G*", eri_memory_limit_mb=1, print_time=None)
    ratios = {}
    for _ in range(options.repeat):
        seconds = [dict(re.findall(r"^  (\S.*?) {2,}\d+ +([\d.]+) +[\d.]+ +[\d.]+$", "".join(line for _, line in run(text, n)[0]), re.M))
                   for n in (1, 2)]
        for stage in ("2e-integrals (J,K)", "DFT XC (grid integration)", "DFT grid construction", "Total program"):
            ratios.setdefault(stage, []).append((float(seconds[0][stage]) / float(seconds[1][stage]), seconds[0][stage], seconds[1][stage]))
    for stage, values in ratios.items():
        ratio, one, two = sorted(values)[len(values) // 2]
        print(f"{stage:28s} one thread {one:>8s} s, two {two:>8s} s, gain {ratio:.2f}")


def memory():
    for n in (1, 2):
        base = run(input_text(WATER, basis="6-31G**", eri_memory_limit_mb=1), n)[1]
        print(f"{n} thread{'s' if n > 1 else ''}: water {base:.0f} MB")
        for carbons in (10, 20, 40):
            _, peak = run(input_text(alkane(carbons), basis="6-31G**", eri_memory_limit_mb=1), n)
            functions = 15 * carbons + 5 * (2 * carbons + 2)  # Cartesian
            print(f"  C{carbons}H{2 * carbons + 2}: {functions} functions, {peak:.0f} MB, {(peak - base) / (functions**2 * 8 / 2**20):.1f} N^2")


parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
parser.add_argument("--program", default=str(ROOT / "build/zentrix"))
parser.add_argument("--repeat", type=int, default=1)
parser.add_argument("figures", nargs="*")
options = parser.parse_args()
for figure in options.figures or ["startup", "threads", "memory"]:
    {"startup": startup, "threads": threads, "memory": memory}[figure]()
