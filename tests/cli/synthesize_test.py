"""Generated tables look like the table that was learned from, and are repeatable."""

import statistics

import harness
from harness import Program, numbers, rows_of

COLUMNS = ["SepalLength", "SepalWidth", "PetalLength", "PetalWidth"]


def ranks(values):
    order = sorted(range(len(values)), key=values.__getitem__)
    result = [0.0] * len(values)
    for rank, position in enumerate(order):
        result[position] = rank
    return result


class Synthesize(Program):
    def synthesize(self, *arguments):
        return self.run_well("synthesize", *arguments)

    def test_gives_margins_and_dependence_of_the_data(self):
        data = rows_of(self.read("iris.csv"))
        for options in (["--correlation", "rank"], ["--copula", "gauss"]):
            sample = rows_of(self.synthesize("iris.csv", "--ignore", "Species", "--size", 4000, *options))
            self.assertEqual((len(sample), list(sample[0])), (4000, COLUMNS))
            for column in COLUMNS:
                source, values = (numbers(row[column] for row in rows) for rows in (data, sample))
                spread = statistics.stdev(source)
                # A mean of 150 flowers is itself uncertain by 8 % of the spread.
                self.assertAlmostEqual(statistics.mean(values), statistics.mean(source), delta=0.08 * spread)
                self.assertAlmostEqual(statistics.stdev(values), spread, delta=0.15 * spread)
            pairs = [[ranks(numbers(row[c] for row in rows)) for c in ("SepalLength", "PetalLength")]
                     for rows in (data, sample)]
            source, generated = (statistics.correlation(*pair) for pair in pairs)
            self.assertAlmostEqual(generated, source, delta=0.06)

    def test_keeps_to_ranges_where_asked_and_to_independence(self):
        data = rows_of(self.read("iris.csv"))
        arguments = ["iris.csv", "--ignore", "Species", "--size", 2000]
        for row in rows_of(self.synthesize(*arguments, "--within-range")):
            for column in COLUMNS:
                source = numbers(r[column] for r in data)
                self.assertTrue(min(source) - 1e-7 <= float(row[column]) <= max(source) + 1e-7)
        sample = rows_of(self.synthesize(*arguments, "--correlation", "none"))
        columns = [numbers(row[c] for row in sample) for c in ("PetalLength", "PetalWidth")]
        self.assertAlmostEqual(statistics.correlation(*columns), 0.0, delta=0.1)  # 4 / sqrt(2000)

    def test_repeats_itself_by_the_seed_and_from_a_kept_generator(self):
        arguments = ["iris.csv", "--ignore", "Species", "--size", 50]
        first = self.synthesize(*arguments, "--seed", 5, "--model", "iris.ladon")
        self.assertEqual(self.synthesize(*arguments, "--seed", 5), first)
        self.assertNotEqual(self.synthesize(*arguments, "--seed", 6), first)
        self.assertEqual(self.synthesize("iris.ladon", "--size", 50), first)
        self.assertEqual(len(rows_of(self.synthesize("iris.ladon", "--size", 7, "--seed", 6))), 7)

    def test_refuses_what_it_cannot_learn(self):
        self.write("constant.csv", "x,y\n1,2\n1,3\n1,5\n")
        self.write("no.ladon", "{}")
        for arguments, message in {
            ("iris.csv",): "'Species' has texts",
            ("iris.csv", "--ignore", "Colour"): "no column 'Colour'",
            ("constant.csv",): "constant.csv: cannot be learned from. ",
            ("no.ladon",): "no.ladon: is no generator",
            ("no.ladon", "--within-range"): "has learned already",
            ("iris.csv", "--ignore", "Species", "--size", "0"): "1,2147483647",
            ("iris.csv", "--correlation", "none", "--ignore", "Species", "--copula", "frank"): "--copula is",
        }.items():
            done = self.process("synthesize", *arguments)
            self.assertEqual((done.returncode, done.stdout), (1, b""), arguments)
            self.assertRegex(done.stderr.decode(), r"\Atessel: [^\n]+\n\Z")
            self.assertIn(message, done.stderr.decode())


if __name__ == "__main__":
    harness.main()
