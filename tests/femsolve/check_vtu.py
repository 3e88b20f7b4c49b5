#!/usr/bin/env python3
"""Runs femsolve on the bundled plate and reads its .vtu back with Python's XML parser:
the file must be what ParaView reads, and the fields must be the solution's."""
import math
import subprocess
import sys
import xml.etree.ElementTree as ET


def numbers(array):
    return [float(t) for t in array.text.split()]


def read(path):
    root = ET.parse(path).getroot()
    assert root.tag == "VTKFile" and root.get("type") == "UnstructuredGrid", root.attrib
    piece = root.find("UnstructuredGrid/Piece")
    n_points, n_cells = int(piece.get("NumberOfPoints")), int(piece.get("NumberOfCells"))
    points = numbers(piece.find("Points/DataArray"))
    assert len(points) == 3 * n_points
    cells = {a.get("Name"): [int(v) for v in a.text.split()] for a in piece.find("Cells")}
    offsets, types, conn = cells["offsets"], cells["types"], cells["connectivity"]
    assert len(offsets) == n_cells == len(types) and offsets[-1] == len(conn)
    sizes = {5: 3, 9: 4, 10: 4}
    start = 0
    for off, t in zip(offsets, types):
        assert off - start == sizes[t], (start, off, t)
        start = off
    assert all(0 <= c < n_points for c in conn)
    data = {a.get("Name"): (int(a.get("NumberOfComponents")), numbers(a))
            for a in piece.find("PointData")}
    for comps, values in data.values():
        assert len(values) == comps * n_points
        assert all(math.isfinite(v) for v in values)
    return points, data


def main():
    femsolve, mesh = sys.argv[1], sys.argv[2]
    # Poisson: 1 on the left edge, 3 on the right; the maximum principle bounds the rest.
    subprocess.run([femsolve, mesh, "--fix", "left=1", "--fix", "right=3", "-o", "plate_u.vtu",
                    "-q"], check=True)
    points, data = read("plate_u.vtu")
    comps, u = data["u"]
    assert comps == 1
    for p, v in enumerate(u):
        x = points[3 * p]
        assert 1 - 1e-12 <= v <= 3 + 1e-12, v
        if x == 0.0:
            assert abs(v - 1) < 1e-12
        if x == 2.0:
            assert abs(v - 3) < 1e-12
    # Plane stress pulled to the right: displacements point right, the hole concentrates
    # the stress above the far-field 1.
    subprocess.run([femsolve, mesh, "--problem", "elasticity", "--fix", "left:x=0", "--fix",
                    "bottom:y=0", "--load", "right=1,0", "-o", "plate_e.vtu", "-q"], check=True)
    points, data = read("plate_e.vtu")
    comps, d = data["displacement"]
    assert comps == 3 and all(v == 0.0 for v in d[2::3])
    assert all(d[3 * p] >= -1e-12 for p in range(len(d) // 3))
    comps, vm = data["von_mises"]
    assert comps == 1 and min(vm) >= 0 and 2.0 < max(vm) < 4.0, max(vm)
    print("vtu files read back: ok")


if __name__ == "__main__":
    main()
