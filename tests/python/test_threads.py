"""Threads, Ctrl-C, memory and references."""

import collections
import gc
import itertools
import os
import signal
import sys
import threading
import time
import tracemalloc
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor
from multiprocessing import get_context

import numpy as np
import pytest

import gsl_geometry as gg
from support import ball, box


def test_threads_share_bodies_and_get_the_same_answers():
    bodies = [ball(2000, centre=(0.3 * k, 0.1, 3.0 + k)) for k in range(4)]
    table = box((-9, -9, -1), (9, 9, 0))
    directions = gg.sphere(100)

    def ask(k):
        pair = gg.Pair(bodies[k % 4], [table, bodies[(k + 1) % 4]])
        travels = [gg.sweep(bodies[k % 4], [table], d).travel for d in directions[:20]]
        return np.concatenate([pair.sweep(directions).travel, travels])

    expected = [ask(k) for k in range(4)]
    with ThreadPoolExecutor(8) as pool:
        for k, found in enumerate(pool.map(ask, range(32))):
            assert found.tobytes() == expected[k % 4].tobytes()


def test_threads_share_a_pair_and_a_solver():
    pair = gg.Pair(ball(2000, centre=(0, 0, 3)), [box((-9, -9, -1), (9, 9, 0))])
    random = np.random.default_rng(1)
    lu, sides = gg.LU(random.normal(size=(60, 60))), random.normal(size=(16, 60))
    directions = gg.sphere(64)
    expected = [pair.sweep(d) for d in directions], [lu.solve(b) for b in sides]
    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(pair.sweep, directions)) == expected[0]
        assert np.array_equal(list(pool.map(lu.solve, sides)), expected[1])


def test_other_threads_run_meanwhile():
    # A thread that counts makes progress during a batch, which keeps it waiting if it holds the lock.
    pair = gg.Pair(ball(20000, centre=(0.1, 0, 3)), [ball(20000, centre=(0, 0.1, 0))], threads=1)
    directions = gg.sphere(3000)
    longest, last, stop = [0.0], [time.perf_counter()], threading.Event()

    def tick():
        while not stop.is_set():
            now = time.perf_counter()
            longest[0], last[0] = max(longest[0], now - last[0]), now
            time.sleep(0.001)

    thread = threading.Thread(target=tick)
    thread.start()
    begin = time.perf_counter()
    pair.sweep(directions)
    taken = time.perf_counter() - begin
    stop.set()
    thread.join()
    assert longest[0] < max(0.1, 0.6 * taken)


def nested_balls():
    """A question that takes long: surfaces that are close everywhere."""
    return gg.Pair(ball(60000), [ball(60000, radius=1.0001)])


class Interrupted(Exception):
    pass


@pytest.fixture
def alarm():
    """Raises Interrupted in the main thread after some time, as Ctrl-C raises KeyboardInterrupt."""

    def interrupt(*_):
        raise Interrupted

    before = signal.signal(signal.SIGALRM, interrupt)
    yield lambda seconds: signal.setitimer(signal.ITIMER_REAL, seconds)
    signal.setitimer(signal.ITIMER_REAL, 0)
    signal.signal(signal.SIGALRM, before)


def test_an_interrupt_ends_a_long_batch_at_once(alarm):
    pair = nested_balls()
    directions = gg.sphere(1000000)

    def delay(asked):
        begin = time.perf_counter()
        alarm(0.3)
        with pytest.raises(Interrupted):
            asked.sweep(directions)
        taken = time.perf_counter() - begin
        assert taken >= 0.3
        return taken - 0.3

    # Other programs may take the processors for a while, so that the best of three counts.
    for asked in (pair, gg.Pair(pair.moving, pair.fixed, threads=1)):
        assert min(delay(asked) for _ in range(3)) < 0.2


def test_an_interrupt_ends_short_calls_in_a_row(alarm):
    a, b = box(), box((0, 0, 3), (1, 1, 4))
    alarm(0.1)
    with pytest.raises(Interrupted):
        while True:
            gg.sweep(a, b, "z")


def test_an_interrupt_ends_a_long_query(alarm):
    p = np.random.default_rng(2).uniform(size=(4, 1000000, 3))

    def delay():
        begin = time.perf_counter()
        alarm(0.1)
        with pytest.raises(Interrupted):
            while True:
                gg.point_triangle(*p)
        return time.perf_counter() - begin - 0.1

    assert min(delay() for _ in range(3)) < 0.2


def test_progress_that_returns_false_leaves_the_rest():
    pair = gg.Pair(ball(2000, centre=(0.1, 0, 3)), [ball(2000)])
    seen = []

    def progress(part):
        seen.append(part)
        return np.bool_(False) if len(seen) == 3 else np.bool_(True)

    r = pair.sweep(gg.sphere(300000), progress=progress)
    counts = {name: int((r.status == name).sum()) for name in ("contact", "none", "cancelled")}
    assert counts["cancelled"] > 0 and len(seen) == 3 and seen == sorted(seen) and seen[-1] < 1.0
    rest = r.status == "cancelled"
    assert np.isnan(r.direction[rest]).all() and np.isinf(r.travel[rest]).all() and not r.touches[rest].any()
    k = int(np.argmax(rest))
    assert repr(r[k]) == "Contact(cancelled)" and "cancelled" in repr(r)
    assert r[k].to_dict()["direction"] is None


def sweep_all(pair, directions):
    return pair.sweep(directions).to_dict()


def test_other_processes_take_bodies_and_return_answers():
    pair = gg.Pair(ball(600, centre=(0.1, 0.2, 3.0)), [box((-2, -2, -1), (2, 2, 0))])
    parts = np.array_split(gg.sphere(40), 2)
    with ProcessPoolExecutor(2, mp_context=get_context("spawn")) as pool:
        for part, found in zip(parts, pool.map(sweep_all, [pair] * 2, parts)):
            for name, column in pair.sweep(part).to_dict().items():
                assert found[name].tobytes() == column.tobytes()


def resident():
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * 4096


def test_sweeps_and_bodies_leave_nothing():
    # Bodies large enough that each one that stays, or its preparation, shows; answers so many that each shows.
    large, fixed = ball(2000), ball(500, centre=(0, 0, 3))
    small = box(), box((0, 0, 3), (1, 1, 4))

    def some(count):
        for _ in range(count):
            body = gg.Body(large.vertices, large.faces)
            for made in (body, body.grown(0.125), body.moved(np.eye(4))):
                assert gg.sweep(made, fixed, "z") and len(gg.Pair(made, [fixed]).sweep([(0, 0, 1)] * 2)) == 2
            for _ in range(100):
                assert gg.sweep(*small, "z", clearance=0.5).to_dict()["exact"] is False

    some(3)
    gc.collect()
    blocks, before = sys.getallocatedblocks(), resident()
    some(20)
    gc.collect()
    assert sys.getallocatedblocks() - blocks < 1000  # of 2000 small sweeps
    assert resident() - before < 3 << 20  # of 60 bodies of about 200 kB


def test_a_forked_child_answers_the_same():
    pair = gg.Pair(ball(2000, centre=(0.1, 0, 3)), [ball(2000)])
    directions = gg.sphere(200)
    expected = pair.sweep(directions).travel.tobytes()
    child = os.fork()
    if child == 0:
        fresh = gg.Pair(gg.Body(pair.moving.triangles), pair.fixed)
        same = [p.sweep(directions).travel.tobytes() == expected for p in (pair, fresh)]
        os._exit(0 if all(same) else 1)
    for _ in range(600):
        done, status = os.waitpid(child, os.WNOHANG)
        if done:
            break
        time.sleep(0.05)
    else:
        os.kill(child, signal.SIGKILL)
        os.waitpid(child, 0)
        raise AssertionError("the child does not end")
    assert os.waitstatus_to_exitcode(status) == 0
    assert pair.sweep(directions).travel.tobytes() == expected


def test_a_million_calls_leak_nothing():
    a, b, pair = box(), box((0, 0, 3), (1, 1, 4)), gg.Pair(box(), [box((0, 0, 3), (1, 1, 4))])
    d, p = np.array([0.0, 0.0, 1.0]), np.zeros(3)
    lu, side, edges, wrong = gg.LU(np.eye(3)), np.ones((1, 3)), np.eye(4, dtype=bool), np.zeros((4, 2))
    core = sys.modules["gsl_geometry._core"]
    along, terms = (0.0, 0.0, 1.0), (1e9, False, 0, 0.0)

    def repeat(count, function, *arguments):
        collections.deque(map(function, *(itertools.repeat(value, count) for value in arguments)), maxlen=0)

    def refused(call):
        try:
            call()
        except ValueError:
            return
        raise AssertionError

    def some(count):
        repeat(count, core.label, edges)
        repeat(count, lu._core.solve, side)
        repeat(count // 32, pair._core.one, along, along, terms, False)
        for _ in range(count // 400):
            gg.sweep(a, b, d).normal
            pair.sweep("z").moving.point
            gg.point_segment(p, p, d)
            gg.Body(a.vertices, a.faces).triangles
            pair.sweep([d, d]).status
            for call in (lambda: gg.Body(wrong, wrong), lambda: gg.sweep(a, b, p), lambda: pair.sweep(wrong)):
                refused(call)
        for _ in range(count // 4000):
            pair.patch("z")

    some(8000)
    gc.collect()
    watched = (d, p, side, edges, wrong, along, a, b, pair, None)
    counts, before = [sys.getrefcount(thing) for thing in watched], resident()
    tracemalloc.start()
    some(4000)
    gc.collect()
    kept = tracemalloc.get_traced_memory()[0]
    tracemalloc.stop()
    assert kept < 100_000
    some(480_000)
    gc.collect()
    assert resident() - before < 8 << 20
    after = [sys.getrefcount(thing) for thing in watched]
    assert after[:-1] == counts[:-1] and abs(after[-1] - counts[-1]) < 1000
