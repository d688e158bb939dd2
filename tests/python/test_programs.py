"""The programs of examples/python run."""

import os
import signal
import subprocess
import sys
import time
from pathlib import Path

import numpy as np
import pytest

import gsl_geometry as gg
from support import PACKAGE, SOURCE

EXAMPLES = SOURCE / "examples" / "python"


def run(name, *arguments):
    done = subprocess.run(
        [sys.executable, "-B", EXAMPLES / name, *arguments], capture_output=True, text=True, check=False,
        env={**os.environ, "PYTHONPATH": str(PACKAGE.parent)},
    )  # fmt: skip
    assert done.returncode == 0, done.stderr
    return done.stdout


def test_read_and_sweep():
    assert run("read_and_sweep.py").splitlines() == [
        "Down: contact after 30, vertex-face",
        "  triangle 120 of the bolt meets triangle 0 of the bracket at [6.5        1.74170005 0.        ]",
        "From one unit above: 1",
        "Each on its own: [30. 60.]",
        "Upside down: Contact(after 10 along (0, 0, -1): vertex-face, moving triangle 216 on fixed triangle 31)",
    ]


def test_thousand_pairs():
    assert run("thousand_pairs.py").startswith("1000 pairs\nleast travel    ")


def test_free_directions(tmp_path):
    pytest.importorskip("matplotlib")
    picture = tmp_path / "map.png"
    assert " of 8000 directions are free" in run("free_directions.py", picture)
    assert picture.read_bytes()[:4] == b"\x89PNG"


def slowly(k, parts, directions):
    import survey

    time.sleep(0.05)
    return survey.travels(k, parts, directions)


def test_the_survey_survives_the_loss_of_a_worker(monkeypatch):
    distributed = pytest.importorskip("distributed")
    for folder in (EXAMPLES, Path(__file__).parent):
        monkeypatch.syspath_prepend(folder)  # the workers have the same path
    import survey

    parts, directions = survey.assembly(3), gg.sphere(30)
    expected = np.stack([survey.travels(k, parts, directions) for k in range(len(parts))])
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None)
    with cluster, distributed.Client(cluster) as client:
        assert survey.survey(client, parts, directions).tobytes() == expected.tobytes()
        futures = client.map(slowly, range(len(parts)), parts=parts, directions=directions)
        distributed.wait(futures[:4])
        os.kill(min(client.run(os.getpid).values()), signal.SIGKILL)
        assert not all(future.done() for future in futures)
        assert np.stack(client.gather(futures)).tobytes() == expected.tobytes()
