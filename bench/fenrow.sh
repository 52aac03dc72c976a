#!/usr/bin/env bash
# Text conversion speed: the converter beside pandas' read_csv (C engine) on the same numbers.
# Needs python3-pandas from Debian (apt-get install python3-pandas).
# Usage: bench/fenrow.sh [build/bin] [megabytes]
set -euo pipefail
bin=$(realpath "${1:-build/bin}")
megabytes=${2:-500}
work=$(mktemp -d /tmp/orvanex_bench_text_XXXXXX)
trap 'rm -rf "$work"' EXIT
"$bin/orvanex_bench_fenrow" "$megabytes" "$work"
/usr/bin/python3 - "$work/bench_fenrow.dat" <<'PY'
import os, resource, sys, time
import pandas
path = sys.argv[1]
start = time.perf_counter()
frame = pandas.read_csv(path, sep=" ", header=None, skiprows=2, engine="c", dtype="float64")
seconds = time.perf_counter() - start
size = os.path.getsize(path) / 1e6
peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
print(f"pandas read_csv (c):  {seconds:.2f} s, {size / seconds:.1f} MB/s, peak RSS {peak:.0f} MB, {frame.shape}")
PY
