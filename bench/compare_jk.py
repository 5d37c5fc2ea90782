#!/usr/bin/env python3
"""One J+K build of this engine next to PySCF's: same molecule, basis, density and threads, in one run. PySCF screens at
1e-11, this engine at its default threshold, which is tighter, and then once more at 1e-11.

usage: compare_jk.py BUILD_FOLDER [--case NAME ...] [--threads N] [--repeat N] [--peer-j] [--keep PATH]

PySCF (from the Python registry) makes the molecule and a density, which go to the program BUILD_FOLDER/bench/jk_from_file
in a plain file. Both sides then build J and K directly, with pair data and Schwarz bounds made beforehand. Printed: medians,
the ratio, and the largest difference of the two results; for 1e-11 the largest errors of this engine's own results.
"""
import argparse
import math
import os
import statistics
import subprocess
import sys
import tempfile
import time

from samples import CAFFEINE, alkane, waters

CASES = {
    "caffeine-631gs": (CAFFEINE, "6-31g*", True),
    "c20h42-631gss": (alkane(20), "6-31g**", True),
    "water20-631gss": (waters(20), "6-31g**", True),
    "caffeine-tz": (CAFFEINE, "cc-pvtz", True),
    "caffeine-tz-spherical": (CAFFEINE, "cc-pvtz", False),
    "caffeine-svp": (CAFFEINE, "def2-svp", False),
}
PEER_THRESHOLD = 1e-11


def shell_order(mol):
    """Shells in the order of our basis files, in which an s and a p shell of common exponents follow each other."""
    return sorted(range(mol.nbas), key=lambda b: (mol.bas_atom(b), mol.bas_angular(b) > 1, -mol.bas_exp(b).max(), mol.bas_angular(b)))


def shells(mol):
    """Shells in the convention of SHELL_T: coefficients of bare primitives, x^l with self-overlap 1."""
    for b in shell_order(mol):
        l, alpha, contractions = mol.bas_angular(b), mol.bas_exp(b), mol.bas_ctr_coeff(b)
        odd = math.prod(range(1, 2 * l, 2))

        def overlap(p):
            return (math.pi / p) ** 1.5 * odd / (2 * p) ** l

        for column in contractions.T:
            terms = [(a, c / math.sqrt(overlap(2 * a))) for a, c in zip(alpha, column) if c != 0.0]
            self_overlap = sum(x * y * overlap(a + b) for a, x in terms for b, y in terms)
            yield mol.bas_atom(b), l, [(a, c / math.sqrt(self_overlap)) for a, c in terms]


def write_case(path, mol, density):
    with open(path, "w") as out:
        print(mol.natm, file=out)
        for a in range(mol.natm):
            print(*("%.17g" % x for x in mol.atom_coord(a)), file=out)
        table = list(shells(mol))
        print(len(table), 0 if mol.cart else 1, file=out)
        for atom, l, terms in table:
            print(atom, l, len(terms), *("%.17g %.17g" % term for term in terms), file=out)
    density.tofile(path + ".density")


def function_order(mol, numpy):
    """Positions of PySCF's functions in our order: shells by shell_order, m = -l .. l (p functions are x, y, z there)."""
    order = []
    for b in shell_order(mol):
        l, at = mol.bas_angular(b), mol.ao_loc_nr()[b]
        for _ in range(mol.bas_nctr(b)):
            order += [at + 1, at + 2, at] if l == 1 and not mol.cart else range(at, at + len_of(l, mol.cart))
            at += len_of(l, mol.cart)
    return numpy.array(order)


def len_of(l, cart):
    return (l + 1) * (l + 2) // 2 if cart else 2 * l + 1


def run_case(name, arguments):
    import numpy
    from pyscf import gto, lib, scf

    geometry, basis, cart = CASES[name]
    lib.num_threads(arguments.threads)
    mol = gto.M(atom=geometry, basis=basis, cart=cart, verbose=0)
    density = scf.RHF(mol).get_init_guess(key="minao")
    overlap = mol.intor("int1e_ovlp")
    norm = numpy.sqrt(numpy.diag(overlap))
    order = function_order(mol, numpy)
    to_ours = lambda m, power: (m * numpy.outer(norm**power, norm**power))[numpy.ix_(order, order)]

    mf = scf.RHF(mol)
    mf.direct_scf_tol = PEER_THRESHOLD
    mf.opt = mf.init_direct_scf(mol)
    clock = time.process_time if arguments.processor_time else time.perf_counter
    peer_times = []
    for _ in range(arguments.repeat):
        start = clock()
        j, k = scf.hf.get_jk(mol, density, hermi=1, vhfopt=mf.opt[None] if isinstance(mf.opt, dict) else mf.opt)
        peer_times.append(clock() - start)
    peer_j_times = []
    for _ in range(arguments.repeat if arguments.peer_j else 0):
        start = time.perf_counter()
        scf.hf.get_jk(mol, density, hermi=1, with_k=False, vhfopt=mf.opt[None] if isinstance(mf.opt, dict) else mf.opt)
        peer_j_times.append(time.perf_counter() - start)

    with tempfile.TemporaryDirectory() as folder:
        path = arguments.keep or os.path.join(folder, "case")
        write_case(path, mol, numpy.ascontiguousarray(to_ours(density, 1)))
        environment = dict(os.environ, OMP_NUM_THREADS=str(arguments.threads))
        if arguments.processor_time:
            environment["ZENTRIX_PROCESSOR_TIME"] = "1"
        program = os.path.join(arguments.build, "bench", "jk_from_file")

        def words(*options):
            command = [program, path, str(max(3, arguments.repeat)), *options]
            return [line.split() for line in subprocess.run(command, env=environment, check=True, capture_output=True, text=True)
                    .stdout.splitlines()]

        times = {key: float(value) for key, value in words()}
        n = len(density)
        ours = numpy.fromfile(path + ".result").reshape(2, n, n)
        # "threshold 1e-11  j 0.16  error 8e-11  k 0.65  error 6e-11"
        _, _, _, j_time, _, j_error, _, k_time, _, k_error = words(str(PEER_THRESHOLD))[0]
    difference = [abs(ours[x] - to_ours(m, -1)).max() for x, m in ((0, j), (1, k))]
    peer = statistics.median(peer_times)
    alone = ""
    if peer_j_times:
        peer_j = statistics.median(peer_j_times)
        alone = "   J alone: PySCF %.3f s, ratio %.0f" % (peer_j, peer_j / times["j"])
    print("%-22s %5d functions  %d threads  PySCF %8.3f s   J %7.3f s  K %7.3f s  ratio %5.1f   set-up %.3f s   |dJ| %.1e |dK| %.1e%s"
          % (name, n, arguments.threads, peer, times["j"], times["k"], peer / (times["j"] + times["k"]), times["setup"], *difference, alone))
    loose = float(j_time) + float(k_time)
    print("%-22s    both at %.0e: J %7.3f s  K %7.3f s  ratio %5.1f   errors %.1e, %.1e"
          % ("", PEER_THRESHOLD, float(j_time), float(k_time), peer / loose, float(j_error), float(k_error)))
    sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--case", nargs="*", default=["caffeine-631gs"], choices=list(CASES))
    parser.add_argument("--threads", type=int, default=1)
    parser.add_argument("--repeat", type=int, default=1)
    parser.add_argument("--peer-j", action="store_true", help="time the peer's J without K too")
    parser.add_argument("--processor-time", action="store_true", help="instead of elapsed time (one thread, busy machine)")
    parser.add_argument("--keep", metavar="PATH", help="leave the case's files at PATH, for jk_from_file")
    arguments = parser.parse_args()
    for name in arguments.case:
        run_case(name, arguments)


if __name__ == "__main__":
    main()
