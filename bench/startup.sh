#!/usr/bin/env bash
# Start to exit of a batch run of an empty macro: the whole process, 50 runs after 5 warm-ups,
# timed by hyperfine beside /bin/true (the cost of starting any process on this machine).
# Prints mean, standard deviation, median, min and max in milliseconds.
# Usage: bench/startup.sh [path/to/orvanex]
set -euo pipefail
launcher=$(realpath "${1:-build/bin/orvanex}")
work=$(mktemp -d /tmp/orvanex_bench_XXXXXX)
trap 'rm -rf "$work"' EXIT
printf '#!MC 1100\n' > "$work/empty.mcr"
cd "$work"
hyperfine --warmup 5 --runs 50 -N --style none --export-json "$work/result.json" \
  "$launcher -b empty.mcr" "/bin/true" > /dev/null
/usr/bin/python3 - "$work/result.json" <<'PY'
import json, sys
for r in json.load(open(sys.argv[1]))["results"]:
    ms = lambda v: v * 1000.0
    name = r["command"].split("/")[-1]
    print(f"{name:28s} median {ms(r['median']):6.1f} ms  mean {ms(r['mean']):6.1f} ± {ms(r['stddev']):4.1f} ms"
          f"  min {ms(r['min']):6.1f}  max {ms(r['max']):6.1f}")
PY
