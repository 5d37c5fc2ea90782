#!/usr/bin/env python3
"""Table of single quartet classes: integrals a second and part of the processor's peak, one thread.

usage: class_table.py [--bench build/bench/bench_jk]

Times come from the benchmarks quartet/* of bench_jk (integrals of a vector of quartets and their exchange digestion). Floating-point
operations are counted, not estimated: valgrind's callgrind counts how often each instruction of the AVX2 kernels is executed, the
disassembly tells what it does (a fused multiply-add counts two a lane). The vectors of AVX-512 hold twice the quartets with the
same operations on each. The peak is that of benchmark peak/fma, independent fused multiply-adds in registers.
"""
import argparse
import json
import os
import re
import subprocess
import tempfile
from pathlib import Path

from samples import ROOT

LANES = 4  # quartets in a vector of the counted kernels


def floating_point(mnemonic, operands):
    """Operations of one execution of an instruction."""
    name = re.match(r"v?(f?n?madd|f?n?msub|fmaddsub|fmsubadd|add|sub|mul|div|sqrt|max|min|round)[0-9a-z]*([ps])d$", mnemonic)
    if not name:
        return 0
    lanes = 1 if name[2] == "s" else 4 if "%ymm" in operands else 2
    return lanes * (2 if "madd" in name[1] or "msub" in name[1] else 1)


def instructions(program):
    """Address -> operations of all instructions of the AVX2 kernels."""
    text = subprocess.run(["objdump", "-d", "-C", "--no-show-raw-insn", program], capture_output=True, text=True, check=True).stdout
    table, inside = {}, False
    for line in text.splitlines():
        if line.endswith(">:"):
            inside = "kernels::avx2" in line
        elif inside and (match := re.match(r" +([0-9a-f]+):\t(\S+) *(.*)", line)):
            table[int(match[1], 16)] = floating_point(match[2], match[3])
    return table


def operations_per_quartet(program, name, table):
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "counts"
        subprocess.run(["valgrind", "--tool=callgrind", "--dump-instr=yes", "--dump-line=no", "--compress-pos=no", "--compress-strings=no",
                        f"--callgrind-out-file={out}", program, f"--benchmark_filter={name}$", "--benchmark_min_time=0.001"],
                       env=dict(os.environ, ZENTRIX_ISA="avx2", OMP_NUM_THREADS="1"), capture_output=True, check=True)
        operations, batches, entry, inclusive = 0, 0, False, False
        for line in out.read_text().splitlines():
            if line.startswith("fn="):
                entry = "BACK_OF_CLASS" in line  # one digestion a vector of quartets
            elif line.startswith("calls="):
                inclusive = True  # the next line is the cost of the called function
            elif line.startswith("0x"):
                address, count = line.split()[:2]
                if not inclusive:
                    operations += table.get(int(address, 16), 0) * int(count)
                    if entry:
                        batches += int(count)
                        entry = False
                inclusive = False
    return operations / (batches * LANES)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bench", default=str(ROOT / "build/bench/bench_jk"))
    options = parser.parse_args()
    measured = json.loads(subprocess.run([options.bench, "--benchmark_filter=quartet/|peak/", "--benchmark_format=json"],
                                         env=dict(os.environ, OMP_NUM_THREADS="1"), capture_output=True, text=True, check=True).stdout)
    rows = {b["name"]: b for b in measured["benchmarks"]}
    peak = rows["peak/fma"]["operations"]
    table = instructions(options.bench)
    print(f"peak {peak / 1e9:.1f} Gflop/s")
    print(f"{'class/primitives':18s} {'ns a quartet':>13s} {'integrals/s':>12s} {'flop a quartet':>15s} {'Gflop/s':>8s} {'of peak':>8s}")
    for name, row in rows.items():
        if not name.startswith("quartet/"):
            continue
        flop = operations_per_quartet(options.bench, name, table)
        print(f"{name[8:]:18s} {row['quartet'] * 1e9:13.1f} {row['integrals']:12.2e} {flop:15.0f} {flop / row['quartet'] / 1e9:8.2f} "
              f"{flop / row['quartet'] / peak:7.0%}", flush=True)


main()
