"""Surveys an assembly on any number of machines: which part can leave along which direction?

python3 survey.py [ADDRESS]

It needs Dask's distributed. Without the address of a scheduler it starts two workers on this machine. Each task is one
part among all others. Where a worker is lost, the scheduler gives its tasks to another; answers have the same bits
on every machine, so that the table does, too.
"""

import sys

import numpy as np
from distributed import Client, LocalCluster

import gsl_geometry as gg

FACES = [(0, 2, 1), (0, 3, 2), (4, 5, 6), (4, 6, 7), (0, 1, 5), (0, 5, 4), (1, 2, 6), (1, 6, 5), (2, 3, 7), (2, 7, 6),
         (3, 0, 4), (3, 4, 7)]  # fmt: skip


def box(low, high):
    (x0, y0, z0), (x1, y1, z1) = low, high
    return gg.Body([(x0, y0, z0), (x1, y0, z0), (x1, y1, z0), (x0, y1, z0), (x0, y0, z1), (x1, y0, z1), (x1, y1, z1),
                    (x0, y1, z1)], FACES)  # fmt: skip


def assembly(size):
    """Returns parts in a crate: size x size x size boxes with gaps between them, on a floor and within walls."""
    crate = [
        box((-1, -1, -2), (size + 1, size + 1, -1)),
        box((-2, -1, -1), (-1, size + 1, size)),
        box((size + 1, -1, -1), (size + 2, size + 1, size)),
    ]
    cells = np.argwhere(np.ones((size, size, size), dtype=bool))
    return [box(cell + 0.05, cell + 0.95) for cell in cells] + crate


def travels(k, parts, directions):
    """Returns how far part k can travel along each direction before it touches another part."""
    others = parts[:k] + parts[k + 1 :]
    return gg.Pair(parts[k], others, threads=1).sweep(directions).travel


def survey(client, parts, directions):
    """Returns the travels of each part, shape (number of parts, number of directions)."""
    shared = client.scatter([parts], broadcast=True)[0]
    return np.stack(client.gather(client.map(travels, range(len(parts)), parts=shared, directions=directions)))


def main():
    parts, directions = assembly(4), gg.sphere(200)
    if len(sys.argv) > 1:
        client = Client(sys.argv[1])
    else:
        client = Client(LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None))
    with client:
        table = survey(client, parts, directions)
    free = np.isinf(table)
    print(f"{free.shape[0]} parts, {free.shape[1]} directions: {free.any(axis=1).sum()} parts can leave")
    for k in np.argsort(-free.sum(axis=1), kind="stable")[:3]:
        print(f"  part {k} along {free[k].sum()} directions")


if __name__ == "__main__":
    main()
