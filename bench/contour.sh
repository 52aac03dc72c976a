#!/usr/bin/env bash
# Contours side by side. The same field F = sin(3x) cos(2y) + 0.3 x y over [0, 4]^2 everywhere.
#  1. bench_contour: tracing and extraction of a 2000 x 2000 grid (20 levels) in process, and the
#     draw of flood and lines of a 1000 x 1000 grid into a 1920-pixel image; it also writes the
#     1000 x 1000 grid as a binary data file.
#  2. The whole process: orvanex -b loading that file, flood (banded) and lines of about 12 nice
#     levels, exported as a 1920-pixel PNG (hyperfine), beside the same export without contours.
#  3. matplotlib contourf + contour + savefig (1920 pixels wide, 12 levels) in a started Python.
#  4. VTK's contour filter on the 2000 x 2000 grid as image data (20 levels) in a started Python.
# Needs hyperfine, python3-matplotlib and python3-vtk9 from Debian.
# Usage: bench/contour.sh [build/bin]
set -euo pipefail
bin=$(realpath "${1:-build/bin}")
work=$(mktemp -d /tmp/orvanex_bench_contour_XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"
"$bin/orvanex_bench_contour" "$work"

cat > flood.mcr <<'EOF'
#!MC 1100
$!GLOBALCONTOUR 1 VAR = 3
$!CONTOURLEVELS RESETTONICE CONTOURGROUP = 1 APPROXNUMVALUES = 12
$!GLOBALCONTOUR 1 COLORMAPFILTER { COLORMAPDISTRIBUTION = BANDED }
$!FIELDLAYERS SHOWCONTOUR = YES SHOWMESH = NO
$!FIELDMAP [1] CONTOUR { CONTOURTYPE = BOTHLINESANDFLOOD COLOR = BLACK }
$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 1920 EXPORTFNAME = "flood.png"
$!EXPORT
EOF
cat > plain.mcr <<'EOF'
#!MC 1100
$!FIELDLAYERS SHOWMESH = NO
$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 1920 EXPORTFNAME = "plain.png"
$!EXPORT
EOF
hyperfine -N -w 3 -r 20 "$bin/orvanex -b flood.mcr grid1000.plt" "$bin/orvanex -b plain.mcr grid1000.plt"

/usr/bin/python3 - <<'PY'
import time
import numpy as np
import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt
x = np.linspace(0, 4, 1000)
X, Y = np.meshgrid(x, x)
F = np.sin(3 * X) * np.cos(2 * Y) + 0.3 * X * Y
times = []
for run in range(6):
    start = time.perf_counter()
    fig = plt.figure(figsize=(9, 8), dpi=1920 / 9)
    ax = fig.add_subplot(111)
    cs = ax.contourf(X, Y, F, levels=12)
    ax.contour(X, Y, F, levels=cs.levels, colors="k", linewidths=0.5)
    fig.savefig("mpl.png")
    plt.close(fig)
    times.append(time.perf_counter() - start)
print(f"matplotlib contourf + contour + savefig, 1000 x 1000, 1920 px: best {min(times[1:]) * 1000:.0f} ms, "
      f"median {sorted(times[1:])[2] * 1000:.0f} ms")
PY

/usr/bin/python3 - <<'PY'
import time
import numpy as np
import vtk
from vtk.util import numpy_support
n = 2000
x = np.linspace(0, 4, n)
X, Y = np.meshgrid(x, x)
F = (np.sin(3 * X) * np.cos(2 * Y) + 0.3 * X * Y).astype(np.float32)
image = vtk.vtkImageData()
image.SetDimensions(n, n, 1)
image.SetSpacing(4 / (n - 1), 4 / (n - 1), 1)
image.GetPointData().SetScalars(numpy_support.numpy_to_vtk(F.ravel(), deep=True))
lo, hi = float(F.min()), float(F.max())
times = []
for run in range(6):
    contour = vtk.vtkContourFilter()
    contour.SetInputData(image)
    for level in range(20):
        contour.SetValue(level, lo + (level + 1) * (hi - lo) / 21)
    start = time.perf_counter()
    contour.Update()
    times.append(time.perf_counter() - start)
points = contour.GetOutput().GetNumberOfPoints()
print(f"VTK contour filter, 2000 x 2000, 20 levels: best {min(times[1:]) * 1000:.1f} ms, {points} points")
PY
