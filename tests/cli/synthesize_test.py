"""Generated tables look like the table that was learned from, and are repeatable."""

import json
import statistics
from xml.etree import ElementTree

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

    def test_reports_how_much_alike_data_and_rows_are(self):
        data = self.read("iris.csv").replace("PetalWidth", "a<b & c", 1)
        self.write("flowers.csv", data)
        text = self.synthesize("flowers.csv", "--ignore", "Species", "--size", 500, "--terms", 9,
                               "--report", "alike.json", "--pictures", "margins.svg")
        tables = {table["name"]: table for table in json.loads(self.read("alike.json"))}
        distances = tables["Quality: Distances"]
        column = distances["columns"][0]
        self.assertEqual(column["name"], "Kolmogorov-Smirnov")
        sources, samples = rows_of(data), rows_of(text)
        for name, distance in zip(distances["rowNames"], column["values"]):
            source, sample = (numbers(row[name] for row in rows) for rows in (sources, samples))
            steps = [sum(v <= x for v in source) / len(source) - sum(v <= x for v in sample) / len(sample)
                     for x in source + sample]
            self.assertAlmostEqual(distance, max(map(abs, steps)), delta=1e-12)

        svg = "{http://www.w3.org/2000/svg}"
        picture = ElementTree.fromstring(self.read("margins.svg"))
        panels = picture.findall(svg + "g")
        self.assertEqual([panel.find(svg + "text").text for panel in panels], [*COLUMNS[:3], "a<b & c"])
        for panel in panels:
            bottom = float(panel.find(svg + "line").get("y1"))
            bars = panel.findall(f"{svg}svg/{svg}rect")
            areas = sum(float(bar.get("width")) * float(bar.get("height")) for bar in bars)
            line = panel.find(f"{svg}svg/{svg}polyline").get("points")
            points = [tuple(numbers(point.split(","))) for point in line.split()]
            density = sum((b[0] - a[0]) * (bottom - (a[1] + b[1]) / 2) for a, b in zip(points, points[1:]))
            self.assertAlmostEqual(density / areas, 1.0, delta=0.02)  # both have the area 1
            self.assertTrue(all(float(bar.get("y")) + float(bar.get("height")) <= bottom + 0.02 for bar in bars))

    def test_refuses_what_it_cannot_learn(self):
        self.write("constant.csv", "x,y\n1,2\n1,3\n1,5\n")
        self.write("no.ladon", "{}")
        for arguments, message in {
            ("iris.csv",): "'Species' has texts",
            ("iris.csv", "--ignore", "Colour"): "no column 'Colour'",
            ("constant.csv",): "constant.csv: cannot be learned from. ",
            ("no.ladon",): "no.ladon: is no generator",
            ("no.ladon", "--within-range"): "has learned already",
            ("no.ladon", "--terms", 3): "has learned already",
            ("no.ladon", "--report", "alike.txt"): "need the data",
            ("iris.csv", "--ignore", "Species", "--size", "0"): "1,2147483647",
            ("iris.csv", "--correlation", "none", "--ignore", "Species", "--copula", "frank"): "--copula is",
        }.items():
            done = self.process("synthesize", *arguments)
            self.assertEqual((done.returncode, done.stdout), (1, b""), arguments)
            self.assertRegex(done.stderr.decode(), r"\Atessel: [^\n]+\n\Z")
            self.assertIn(message, done.stderr.decode())


if __name__ == "__main__":
    harness.main()
