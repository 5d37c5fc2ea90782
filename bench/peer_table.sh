#!/bin/sh
# The table of ratios peer / ours of docs/performance.md. usage: bench/peer_table.sh [STRUCTURE.xyz] > table.txt
# REPEAT=5 for medians of five; the optimisation is left out without a structure. Run in the root of the sources, machine idle.
set -e
repeat=${REPEAT:-1}
date; nproc; python3 -c 'import pyscf; print("PySCF", pyscf.__version__)'
python3 bench/compare_jk.py build --peer-j --repeat "$repeat" --case caffeine-631gs c20h42-631gss water20-631gss caffeine-tz caffeine-tz-spherical
python3 bench/compare_with_peer.py --direct --repeat "$repeat" "caffeine/6-31G*" "C20H42/6-31G**"
python3 bench/compare_dft.py --repeat "$repeat" --methods PBE B3LYP
python3 bench/compare_dft.py --repeat "$repeat" --cycles 2 --bases "6-311G**" --spins restricted unrestricted
python3 bench/compare_gradient.py --cycles 1 --repeat "$repeat"
python3 bench/compare_hessian.py --repeat "$repeat" --peer-repeats 5
python3 bench/compare_hessian.py --repeat "$repeat" --peer-repeats 5 --method B3LYP
python3 bench/compare_mp2.py --repeat "$repeat" benzene/cc-pVTZ
[ -z "$1" ] || python3 bench/compare_optimization_run.py --repeat "$repeat" "$1"
