"""The driver's reading of benchmark reports, agreement of values, checks and goals."""

import importlib.machinery
import importlib.util
import os
import unittest

_path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "run")
_loader = importlib.machinery.SourceFileLoader("peers_run", _path)
_spec = importlib.util.spec_from_loader("peers_run", _loader)
run = importlib.util.module_from_spec(_spec)
_loader.exec_module(run)


def entry(name, cpu_time, unit="us", label="", run_type="iteration", **extra):
    return dict(name=name, run_name=name, run_type=run_type, cpu_time=cpu_time,
                time_unit=unit, label=label, **extra)


class ReadTest(unittest.TestCase):
    def test_iterations_only_scaled_to_seconds_with_label_and_error(self):
        report = {"benchmarks": [
            entry("ours/normal.cdf(1.96)/50", 4.0, label="0.975"),
            entry("ours/normal.cdf(1.96)/50", 6.0, label="0.975"),
            entry("ours/normal.cdf(1.96)/50", 5.0, run_type="aggregate"),
            entry("boost/normal.cdf(1.96)/200", 2.0, unit="ms", label="0.97"),
            entry("arb/erfc(-1.96*sqrt(0.5))/50", 800.0, unit="ns"),
            entry("ours/t(10).cdf(2)/50", 0.0, error_occurred=True, error_message="boom"),
        ]}
        got = {(r["impl"], r["case"], r["digits"]): r for r in run.read_benchmarks(report)}
        self.assertEqual(got[("ours", "normal.cdf(1.96)", 50)]["times"], [4e-6, 6e-6])
        self.assertEqual(got[("ours", "normal.cdf(1.96)", 50)]["value"], "0.975")
        self.assertAlmostEqual(got[("boost", "normal.cdf(1.96)", 200)]["times"][0], 2e-3)
        self.assertAlmostEqual(got[("arb", "erfc(-1.96*sqrt(0.5))", 50)]["times"][0], 8e-7)
        self.assertEqual(got[("ours", "t(10).cdf(2)", 50)]["error"], "boom")
        self.assertRaises(ValueError, run.parse_name, "ours/normal.cdf(1.96)")

    def test_agreement_counts_significant_digits(self):
        self.assertEqual(run.agreement("1.959963984540054", "1.959963984540054", 16), 16)
        self.assertEqual(run.agreement("1.9599639845", "1.9599639846", 50), 10)
        self.assertEqual(run.agreement("0.00012345678", "0.00012345679", 50), 7)  # 8.1e-8
        self.assertEqual(run.agreement("2.5", "-2.5", 50), 0)
        self.assertEqual(run.agreement("Float(undefined)", "0.5", 50), 0)


def row(case, digits, **values):
    """A record per impl with one time of 1 us per unit of its position and the given value."""
    return [{"impl": impl, "case": case, "digits": digits, "times": [1e-6], "value": v}
            for impl, v in values.items()]


class CheckTest(unittest.TestCase):
    def test_fails_without_a_confirming_peer_and_notes_a_peer_that_is_off(self):
        good = "1.95996398454005423552459443052055152795555007786954"
        t = "2.2281388519862747483954906632018067178560193664167"
        records = (row("normal.quantile(0.975)", 50, ours=good, boost=good, mpmath=good)
                   + row("t(10).quantile(0.975)", 50, ours=t, boost=t, mpmath="2.2281388519")
                   + row("chisq(5).cdf(9)", 50, ours="0.890935842050227638732239905757",
                         boost="0.89093584205", mpmath="0.8909358420502276")
                   + row("F(5,10).cdf(2.5)", 50, ours="0.897", boost="0.897")
                   + [{"impl": "boost", "case": "beta(12,8).cdf(0.7)", "digits": 50,
                       "times": [], "error": "overflow"}]
                   + row("poisson(1e6).cdf(1e6)", 50, ours=good, boost=good)
                   + [{"impl": "mpmath", "case": "poisson(1e6).cdf(1e6)", "digits": 50,
                       "times": [], "error": "no convergence"}])
        failures, notes = run.problems(run.tabulate(records))
        self.assertEqual(notes, ["t(10).quantile(0.975) at 50: a peer is off "
                                 "(boost on 50, mpmath on 10 digits agree with ours)",
                                 "poisson(1e6).cdf(1e6) at 50: mpmath failed: no convergence"])
        self.assertTrue(any("chisq(5)" in f and "no peer confirms" in f for f in failures))
        self.assertTrue(any("F(5,10)" in f and "no value from mpmath" in f for f in failures))
        self.assertTrue(any("beta(12,8)" in f and "boost failed: overflow" in f for f in failures))
        self.assertFalse(any("normal" in f or "t(10)" in f or "poisson" in f for f in failures))

    def test_goals_compare_against_arb_and_the_limits(self):
        records = [
            {"impl": "ours", "case": "normal.cdf(1.96)", "digits": 50, "times": [6e-6]},
            {"impl": "arb", "case": "erfc(-1.96*sqrt(0.5))", "digits": 50, "times": [5e-6]},
            {"impl": "ours", "case": "gamma(2.5,1.5).quantile(0.9)", "digits": 50,
             "times": [70e-6, 50e-6, 55e-6]},
            {"impl": "ours", "case": "beta(12,8).quantile(0.05)", "digits": 50, "times": [151e-6]},
            {"impl": "ours", "case": "beta(12,8).quantile(0.05)", "digits": 200, "times": [1e-6]},
        ]
        got = {what: (measured, met) for what, measured, _, met in run.goals(run.tabulate(records))}
        self.assertEqual(got["normal.cdf(1.96) / Arb erfc"], ("1.200x", True))
        self.assertEqual(got["gamma(2.5,1.5).quantile(0.9)"], ("55.0 us", True))
        self.assertEqual(got["beta(12,8).quantile(0.05)"], ("151.0 us", False))
        self.assertEqual(len(got), 3)


if __name__ == "__main__":
    unittest.main()
