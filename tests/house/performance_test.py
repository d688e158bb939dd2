"""Makes tables of the library from small results, and compares which peer and which registers a row is about."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
import performance


def goals(works):
    """Returns the cells of each goal by what it is about."""
    return {row[0]: row[1:] for row in performance.library_goals(works)}


def prepared(**nanoseconds):
    """Returns works in which each of the prepared batches takes these times for a pair."""
    by = {who: time * performance.BATCH_INPUTS for who, time in nanoseconds.items()}
    return {work: by for _, _, work in performance.BATCHES}


class FastestPeer(unittest.TestCase):
    def test_is_the_least_time_of_the_others(self):
        self.assertEqual(performance.fastest_peer({"ours": 1.0, "Eigen": 4.0, "glm": 3.0}), "glm")

    def test_is_none_without_a_peer(self):
        self.assertIsNone(performance.fastest_peer({"ours": 1.0}))
        self.assertIsNone(performance.fastest_peer({"ours": 1.0, "transcription": 2.0, "avx2": 0.5}))

    def test_leaves_out_a_peer_that_does_less_of_this_work(self):
        by = {"ours": 2.0, "Eigen": 0.5, "Bullet": 0.6, "bare": 1.5}
        self.assertEqual(performance.fastest_peer(by, "PointPlaneDistance"), "bare")
        self.assertEqual(performance.fastest_peer(by, "PointDistance"), "Eigen")

    def test_is_the_steps_where_every_library_does_less(self):
        by = {"ours": 4.0, "Eigen": 1.0, "steps": 3.0}
        self.assertEqual(performance.fastest_peer(by, "LinePlaneIntersection"), "steps")

    def test_is_not_the_steps_where_a_library_does_the_same(self):
        by = {"ours": 4.0, "CGAL": 3.0, "steps": 2.0}
        self.assertEqual(performance.fastest_peer(by, "PointTriangleDistance"), "CGAL")


class LibraryGoals(unittest.TestCase):
    def test_ratio_is_to_the_peer_that_does_the_same(self):
        row = goals({"PointPlaneDistance": {"ours": 2.0, "Eigen": 0.5, "bare": 1.0}})
        self.assertEqual(row["point and line, point and plane: times the fastest (PointPlaneDistance)"],
                         ["at most 1.2", "2.00", "no"])

    def test_shows_the_worst_work(self):
        row = goals({"PointPlaneDistance": {"ours": 1.0, "bare": 1.0}, "PointLineDistance": {"ours": 1.1, "bare": 1.0}})
        self.assertEqual(row["point and line, point and plane: times the fastest (PointLineDistance)"],
                         ["at most 1.2", "1.10", "yes"])

    def test_work_without_a_fair_peer_is_not_measured(self):
        row = goals({"PointPlaneDistance": {"ours": 2.0, "Eigen": 0.5}})
        self.assertEqual(row["point and line, point and plane: times the fastest"], ["", "not measured", ""])

    def test_batches_have_a_limit_for_each_width(self):
        row = goals(prepared(ours=2.0, avx2=4.01, baseline=9.0))
        apart = "prepared pairs of triangles, out of reach"
        self.assertEqual(row[f"{apart}, AVX-512: ns for a pair"], ["at most 2", "2.00", "yes"])
        self.assertEqual(row[f"{apart}, AVX2: ns for a pair"], ["at most 4", "4.01", "no"])

    def test_each_batch_has_its_limit(self):
        row = goals(prepared(ours=15.5, avx2=31.0, baseline=60.0))
        met = [row[f"{what}, {width}: ns for a pair"][2] for what, _, _ in performance.BATCHES
               for width in ("AVX-512", "AVX2")]
        self.assertEqual(met, ["no", "no", "no", "no", "yes", "yes"])

    def test_batches_of_a_processor_with_avx2_alone(self):
        row = goals(prepared(ours=3.0, baseline=9.0))
        name = "prepared pairs of triangles, out of reach"
        self.assertEqual(row[f"{name}, AVX-512: ns for a pair"], ["", "not measured", ""])
        self.assertEqual(row[f"{name}, AVX2: ns for a pair"], ["at most 4", "3.00", "yes"])

    def test_batches_of_a_processor_with_neither(self):
        row = goals(prepared(ours=3.0, scalar=9.0))
        for width in ("AVX-512", "AVX2"):
            self.assertEqual(row[f"prepared pairs of triangles, out of reach, {width}: ns for a pair"],
                             ["", "not measured", ""])


class LibraryTables(unittest.TestCase):
    def test_peers_that_do_less_are_marked_and_explained(self):
        works = {"PointPlaneDistance": {"ours": 2.0, "Eigen": 0.5, "bare": 1.0}, "PointDistance": {"ours": 1.0}}
        rows = list(performance.library_rows(works))
        self.assertEqual(rows[0], ["PointDistance", "1.00", "", "", "", "", ""])
        self.assertEqual(rows[1], ["PointPlaneDistance", "2.00", "", "bare", "1.00", "2.00", "Eigen (less) 0.500"])
        self.assertEqual([row[:2] for row in performance.less_rows(works)], [["PointPlaneDistance", "Eigen"]])

    def test_our_time_on_inputs_that_are_learned_has_a_column_and_is_no_peer(self):
        works = {"IsParallel": {"ours": 3.0, "learned": 1.0, "steps": 2.0}}
        self.assertEqual(list(performance.library_rows(works)),
                         [["IsParallel", "3.00", "1.00", "steps", "2.00", "1.50", ""]])

    def test_every_goal_is_about_a_row_of_the_benchmarks(self):
        sources = "".join(path.read_text() for path in (performance.ROOT / "bench").glob("*.cpp"))
        named = [work for _, _, works in performance.RATIOS for work in works]
        named += [work for _, _, work in performance.NANOSECONDS] + [*performance.DOES, *performance.LESS]
        for work in named:
            self.assertIn(f'"{work.split("/")[0]}', sources)

    def test_section_has_each_table(self):
        works = {"VectorDot": {"ours": 2.0, "Eigen": 1.0}, **prepared(ours=1.0, avx2=2.0, baseline=4.0, scalar=8.0)}
        text = "\n".join(performance.library({"works": works}))
        self.assertIn("| VectorDot | 2.00 |  | Eigen | 1.00 | 2.00 |  |", text)
        self.assertIn("| PreparedApart | 1.00 | 2.00 | 4.00 | 8.00 | 8.00 |", text)
        self.assertIn("| VectorDot | Ours and the bare structs carry their length along. |", text)
        self.assertNotIn("(less)", text)


def solved(ours, blas, name="FactorAndSolve"):
    return {f"{name}/{n}": {"ours": ours, "OpenBLAS": blas, "Eigen": 9.0} for n in performance.EVERY_SIZE}


class Systems(unittest.TestCase):
    def goals(self, works):
        return {row[0]: row[1:] for row in performance.systems_goals(works)}

    def test_each_size_has_its_limit(self):
        rows = self.goals({**solved(0.82, 1.0), "FactorAndSolve/64": {"ours": 0.5, "OpenBLAS": 1.0}})
        self.assertEqual(rows["32 to 512 unknowns: times the fastest OpenBLAS (32)"], ["at most 0.6", "0.820", "no"])
        self.assertEqual(rows["1024 unknowns: times the fastest OpenBLAS"], ["at most 0.8", "0.820", "no"])
        self.assertEqual(rows["2048 unknowns: times the fastest OpenBLAS"], ["at most 0.85", "0.820", "yes"])

    def test_worst_size_counts(self):
        works = solved(0.5, 1.0)
        works["FactorAndSolve/256"]["ours"] = 0.61
        self.assertEqual(self.goals(works)["32 to 512 unknowns: times the fastest OpenBLAS (256)"],
                         ["at most 0.6", "0.610", "no"])

    def test_missing_size_is_not_passed_over(self):
        works = solved(0.5, 1.0)
        del works["FactorAndSolve/256"]
        self.assertEqual(self.goals(works)["32 to 512 unknowns: times the fastest OpenBLAS"], ["", "not measured", ""])

    def test_peer_without_a_measurement_is_not_passed_over(self):
        self.assertEqual(self.goals({"Label_path/20000": {"ours": 1.0}})[
            "labelling, path, 20,000 nodes: times one read of the matrix"], ["", "not measured", ""])

    def test_narrow_vectors_are_compared_with_each_other(self):
        works = {**solved(0.1, 1.0), **solved(1.1, 1.0, "FactorAndSolve_avx2")}
        self.assertEqual(self.goals(works)["32 to 2048 unknowns, AVX2 on both sides: times OpenBLAS (32)"],
                         ["at most 1.0", "1.10", "no"])

    def test_graphs_of_20000_nodes_count(self):
        works = {"Label_sparse/20000": {"ours": 1.2, "one_read": 1.0}, "Label_sparse/1000": {"ours": 9.0, "one_read": 1.0}}
        self.assertEqual(self.goals(works)["labelling, sparse, 20,000 nodes: times one read of the matrix"],
                         ["at most 1.3", "1.20", "yes"])

    def test_section_has_each_table(self):
        works = {**solved(5000.0, 10000.0), "Label_full/20000": {"ours": 2000.0, "one_read": 1000.0}}
        text = "\n".join(performance.systems({"works": works}))
        self.assertIn("| 64 | widest | 5.00 | 10.0 |  | 0.00900 | 0.500 |  |", text)
        self.assertIn("| full | 20000 | 2.00 | 1.00 | not run | not run | 2.00 |", text)


if __name__ == "__main__":
    unittest.main()
