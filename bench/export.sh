#!/usr/bin/env bash
# Still image export: the mesh of a 1000 x 1000 ordered zone drawn 1920 pixels wide to a PNG, the
# whole process, beside matplotlib's pcolormesh with edges and savefig timed inside an already
# started Python (Debian's python3-matplotlib). The split comes from runs that leave out one stage:
# loading alone, drawing without the mesh, BMP in place of PNG, and a 256-colour PNG.
# Usage: bench/export.sh [build/bin/orvanex]
set -euo pipefail
launcher=$(realpath "${1:-build/bin/orvanex}")
bin=$(dirname "$launcher")
work=$(mktemp -d /tmp/orvanex_bench_export_XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# The zone: X = i, Y = j + 0.1 sin(i / 50), 1000 by 1000 points, as a binary data file.
/usr/bin/python3 - <<'PY'
import math
with open("mesh.dat", "w") as f:
    f.write('VARIABLES = "X" "Y"\nZONE I=1000 J=1000 F=POINT\n')
    for j in range(1000):
        f.write("".join(f"{i} {j + 0.1 * math.sin(i / 50):.6f}\n" for i in range(1000)))
PY
"$bin/fenrow" mesh.dat mesh.plt > /dev/null

macro() {  # name, export lines
    printf '#!MC 1100\n%s\n' "$2" > "$1.mcr"
}
png='$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 1920 EXPORTFNAME = "out.png"
$!EXPORT'
macro load '$!INTERNAL "ECHO loaded"'
macro png "$png"
macro nomesh "\$!FIELDLAYERS SHOWMESH = NO
$png"
macro bmp '$!EXPORTSETUP EXPORTFORMAT = BMP IMAGEWIDTH = 1920 EXPORTFNAME = "out.bmp"
$!EXPORT'
macro png256 "\$!EXPORTSETUP CONVERTTO256COLORS = YES
$png"

hyperfine --warmup 1 --runs 5 --export-markdown orvanex.md \
  -n "load only" "$launcher -b load.mcr mesh.plt" \
  -n "mesh to PNG" "$launcher -b png.mcr mesh.plt" \
  -n "no mesh, PNG" "$launcher -b nomesh.mcr mesh.plt" \
  -n "mesh to BMP" "$launcher -b bmp.mcr mesh.plt" \
  -n "mesh to 256-colour PNG" "$launcher -b png256.mcr mesh.plt"
cat orvanex.md

/usr/bin/python3 - <<'PY'
import math, time
import numpy as np
import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt
i, j = np.meshgrid(np.arange(1000.0), np.arange(1000.0))
x, y = i, j + 0.1 * np.sin(i / 50)
times = []
for run in range(3):
    start = time.perf_counter()
    fig = plt.figure(figsize=(19.2, 17.07), dpi=100)
    ax = fig.add_axes([0.13, 0.11, 0.75, 0.77])
    ax.pcolormesh(x, y, np.zeros_like(x[:-1, :-1]), edgecolors="red", facecolors="none", linewidth=0.5)
    fig.savefig("mpl.png")
    plt.close(fig)
    times.append(time.perf_counter() - start)
print("matplotlib pcolormesh + savefig, 1920 px: " + ", ".join(f"{t:.2f} s" for t in times))
PY
