#!/usr/bin/env bash
# The macro interpreter, whole process: a loop of 1,000,000 `$!VARSET |A| += 1`, beside bash
# arithmetic and gnuplot's `do for` doing the same; then loading and running a macro file of
# 100,000 lines, and one of 100,000 set-value commands. hyperfine, 5 runs each after a warm-up.
# Usage: bench/macro.sh [path/to/orvanex]
set -euo pipefail
launcher=$(realpath "${1:-build/bin/orvanex}")
work=$(mktemp -d /tmp/orvanex_bench_XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
printf '#!MC 1100\n$!VARSET |A| = 0\n$!LOOP 1000000\n$!VARSET |A| += 1\n$!ENDLOOP\n' > loop.mcr
printf 'A=0; for ((i=0;i<1000000;i++)); do A=$((A+1)); done\n' > loop.sh
printf 'A=0\ndo for [i=1:1000000] { A = A + 1 }\n' > loop.gp
{
  printf '#!MC 1100\n'
  for ((i = 0; i < 100000; i++)); do printf '$!VARSET |A| = (%d + 1)\n' "$i"; done
} > long.mcr
{
  printf '#!MC 1100\n'
  for ((i = 0; i < 50000; i++)); do printf '$!INTERFACE ENABLEPAUSES = NO\n$!LIMITS LODTHRESHOLDMINFRACT = 0.%d\n' $((i % 9 + 1)); done
} > setvalues.mcr
commands=("$launcher -b loop.mcr" "bash loop.sh")
command -v gnuplot > /dev/null && commands+=("gnuplot loop.gp")
commands+=("$launcher -b long.mcr" "$launcher -b setvalues.mcr")
hyperfine --warmup 1 --runs 5 -N --style none --export-json result.json "${commands[@]}" > /dev/null
/usr/bin/python3 - result.json <<'PY'
import json, sys
for r in json.load(open(sys.argv[1]))["results"]:
    name = " ".join(p.split("/")[-1] for p in r["command"].split())
    print(f"{name:28s} median {r['median']:7.3f} s  mean {r['mean']:7.3f} ± {r['stddev']:5.3f} s"
          f"  min {r['min']:7.3f}  max {r['max']:7.3f}")
PY
