#!/usr/bin/env python3
"""Writes docs/performance.md and its plots from the results of the benchmarks.

usage: report.py RESULTS DOCS COMMIT

RESULTS is the directory of the results, DOCS the one that gets performance.md and performance/*.svg. The text of the
page is in performance.md.in. Refuses to write if a figure exceeds its bar.
"""

import collections
import math
import pathlib
import re
import statistics
import sys
import textwrap

import plots

OURS, BASELINE, KEPT = "plantjournal", "SQLite", "SQLite, kept"

# The options of SQLite that matter to the figures.
OPTIONS = {"THREADSAFE=1", "SECURE_DELETE", "OMIT_LOOKASIDE", "DEFAULT_SYNCHRONOUS=2", "TEMP_STORE=1",
           "DEFAULT_CACHE_SIZE=-2000", "SYSTEM_MALLOC", "MUTEX_PTHREADS"}


def read(path):
    """Returns the comments of a table, by their first field, and its rows as dictionaries."""
    comments, rows, names = collections.defaultdict(list), [], None
    for line in path.read_text().splitlines():
        fields = line.split("\t")
        if line.startswith("# "):
            comments[fields[0][2:]].append(fields[1:])
        elif names is None:
            names = fields
        else:
            rows.append(dict(zip(names, fields)))
    return comments, rows


def read_bars(path):
    """Returns the figure and the bar of each operation. Exits if a figure exceeds its bar."""
    bars = {row["operation"]: (float(row["figure"]), float(row["bar"])) for row in read(path)[1]}
    if not bars:
        sys.exit(f"{path}: no figures")
    for operation, (figure, bar) in bars.items():
        if not figure <= bar:
            sys.exit(f"docs/performance.md: not written: {operation}: {figure:.4g} exceeds its bar, {bar:g}")
    return bars


def number(value):
    return f"{value:.2f}" if value < 10 else f"{value:,.0f}"


def ratio_or_count(value, digits):
    return f"{value:{digits}}" if value < 10 else f"{value:,.0f} instructions"


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "|".join(["---"] + ["---:"] * (len(head) - 1)) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def bar_table(bars):
    return table(["operation", "measured", "bar"],
                 [[operation, ratio_or_count(figure, ".3f"), ratio_or_count(bar, "g")]
                  for operation, (figure, bar) in bars.items()])


class Times:
    """Nanoseconds of a step, by workload, size and medium, then by implementation, then by round."""

    def __init__(self, rows):
        self.taken = collections.defaultdict(lambda: collections.defaultdict(dict))
        for row in rows:
            key = (row["workload"], int(row["size"]), row["medium"])
            self.taken[key][row["implementation"]][int(row["round"])] = float(row["nanoseconds"])

    @staticmethod
    def title(key):
        return f"{key[0]}, {key[1]:,}" if key[1] else key[0]

    def ratios(self, key, one, other):
        """Ratios of runs of the same round."""
        ones, others = self.taken[key][one], self.taken[key][other]
        return [ones[r] / others[r] for r in sorted(ones) if r in others]

    def ratio(self, key, one=OURS, other=BASELINE):
        return statistics.median(self.ratios(key, one, other))

    def quartiles(self, key, name):
        values = self.ratios(key, name, BASELINE)
        return statistics.quantiles(values, n=4, method="inclusive") if len(values) > 1 else values * 3

    def cell(self, key, name):
        if name not in self.taken[key]:
            return "–"
        low, middle, high = self.quartiles(key, name)
        return f"{number(middle)} ({number(low)}–{number(high)})"

    def table(self, medium, names):
        return table(["operation", *names], [[self.title(key), *(self.cell(key, name) for name in names)]
                                             for key in self.taken if key[2] == medium])

    def median(self, workload, size, medium):
        return statistics.median(self.taken[(workload, size, medium)][OURS].values())

    def sizes(self, workload, medium):
        return sorted(s for w, s, m in self.taken if w == workload and m == medium)

    def exponent(self, workload, medium):
        """The slope of the logarithm of the cost over that of the size, by least squares."""
        points = [(math.log(s), math.log(self.median(workload, s, medium))) for s in self.sizes(workload, medium)]
        return statistics.linear_regression(*zip(*points)).slope


def describe_implementation(name, version):
    return {
        OURS: f"**plantjournal {version}**",
        BASELINE: "**SQLite**, the **baseline**: bare calls to its C interface. Every statement is prepared for its "
                  "call, as in the library.",
        KEPT: "**SQLite, kept**: the same, but each statement is prepared once and kept.",
    }.get(name, f"**{name} {version}**, used as its documentation shows")


def describe_run(about, rows, times):
    absent = ", ".join(name for name, in about["absent"])
    return {
        "implementations": "\n".join(f"- {describe_implementation(*each)}" for each in about["implementation"]),
        "absent": f"Missing on this machine: {absent}." if absent else "",
        "rounds": max(int(row["round"]) for row in rows),
        "fewest": min(len(rounds) for names in times.taken.values() for rounds in names.values()),
        "compiler": about["compiler"][0][0],
        "sqlite": about["SQLite"][0][0],
        "options": ", ".join(f"`{option}`" for option, in about["SQLite option"] if option in OPTIONS),
    }


def describe_memory(rows, bars, names):
    memory = collections.defaultdict(dict)
    for row in rows:
        if row["workload"].startswith("list "):
            key = (row["workload"], int(row["size"]))
            memory[key][row["implementation"]] = (float(row["allocations"]) / key[1], float(row["peak"]))
    others = [name for name in names if name != OURS]

    def bar(key):
        return f"{bars[Times.title(key)][1]:g}" if Times.title(key) in bars else "–"

    return {
        "allocations": table(["list", OURS, "bar", *others], [
            [Times.title(key), number(by[OURS][0]), bar(key), *(number(by[name][0]) for name in others)]
            for key, by in memory.items()]),
        "peaks": table(["list", *names], [
            [Times.title(key), *(number(by[name][1] / by[BASELINE][1]) for name in names)]
            for key, by in memory.items() if key[1] >= 10_000]),
    }


def describe_growth(times):
    grows = {"list events": "the plant's events", "delete a care entry": "the care entries",
             "create a care entry": "the care entries", "update a care entry": "the care entries"}
    sizes = {key[0]: times.sizes(key[0], "memory") for key in times.taken if key[1]}
    return table(["operation", "grows with", "from", "to", "exponent in memory", "on disk"], [
        [workload, grows.get(workload, "the plants"), f"{of[0]:,}", f"{of[-1]:,}",
         f"{times.exponent(workload, 'memory'):.2f}", f"{times.exponent(workload, 'disk'):.2f}"]
        for workload, of in sizes.items() if len(of) > 1])


def describe_design(times):
    """The figures of the last section."""
    care, delete, plant = "create a care entry", "delete a care entry", "delete a plant with 500 care entries"

    def kept(workload, size, medium="memory"):
        return times.ratio((workload, size, medium), BASELINE, KEPT)

    def compare(workload, size, other, other_size, medium="memory"):
        return times.median(workload, size, medium) / times.median(other, other_size, medium)

    return {
        "kept_events_10": f"{kept('list events', 10):.1f}",
        "kept_care": f"{kept(care, 1000):.1f}",
        "kept_events_1000": f"{kept('list events', 1000):.2f}",
        "kept_plants": f"{kept('list plants', 1000):.2f}",
        "kept_care_disk": f"{kept(care, 1000, 'disk'):.2f}",
        "get_exponent": f"{times.exponent('get a plant', 'memory'):.2f}",
        "get_1000": f"{compare('get a plant', 1000, 'list events', 10):,.0f}",
        "get_10000": f"{compare('get a plant', 10_000, 'list events', 10):,.0f}",
        "clone": f"{compare('create a clone', 1000, 'create a plant', 1000):.0f}",
        "clone_disk": f"{compare('create a clone', 1000, 'create a plant', 1000, 'disk'):.1f}",
        "delete_exponent": f"{times.exponent(delete, 'memory'):.2f}",
        "delete": f"{compare(delete, 100_000, care, 100_000):,.0f}",
        "delete_disk": f"{compare(delete, 100_000, care, 100_000, 'disk'):,.0f}",
        "delete_plant": f"{compare(plant, 100_000, care, 100_000, 'disk'):,.0f}",
        "migrate": f"{compare('migrate an older journal', 100_000, 'open a journal', 0, 'disk'):,.0f}",
        "create": f"{compare('create a journal', 0, 'open a journal', 0, 'disk'):,.0f}",
    }


def describe_slower(times):
    slower = [times.title(key) + (" in memory" if key[2] == "memory" else " on disk")
              for key in times.taken if times.ratio(key) > 1.02]
    if not slower:
        return ""
    return ("In this run the median of the library was more than 2 % above that of the baseline in these rows: "
            + "; ".join(slower) + ".")


def wrap(text):
    """Breaks the lines of paragraphs and lists; tables, headings and pictures stay."""
    def wrap_block(block):
        if block[0] in "|#!":
            return block
        return "\n".join(
            textwrap.fill(" ".join(item.split()), 120, subsequent_indent="  " if item.startswith("- ") else "",
                          break_long_words=False, break_on_hyphens=False)
            for item in re.split(r"\n(?=- )", block))
    return "\n\n".join(wrap_block(block) for block in re.split(r"\n{2,}", text.strip())) + "\n"


def main(results, docs, commit):
    memory_bars = read_bars(results / "memory_bars.tsv")
    instructions, answers, shell, watch, command, import_instructions, import_times = (
        read_bars(results / f"{name}_bars.tsv")
        for name in ("instruction", "answer", "answer_shell", "watch", "command", "import_instruction",
                     "import_time"))
    about, rows = read(results / "time.tsv")
    times = Times(rows)
    names = [name for name, _ in about["implementation"]]
    others = [name for name in names if name != BASELINE]

    pictures = docs / "performance"
    pictures.mkdir(exist_ok=True)
    plots.plot_growth(times, pictures / "growth.svg")
    plots.plot_peers(times, others, pictures / "peers.svg")

    template = pathlib.Path(__file__).with_name("performance.md.in").read_text()
    (docs / "performance.md").write_text(wrap(template.format(
        commit=commit, growth=describe_growth(times), slower=describe_slower(times),
        time_in_memory=times.table("memory", others), time_on_disk=times.table("disk", others),
        instruction_bars=bar_table(instructions), answer_bars=bar_table(answers), shell_bars=bar_table(shell),
        watch_bars=bar_table(watch), command_bars=bar_table(command),
        import_bars=bar_table(import_times | import_instructions),
        **describe_run(about, rows, times), **describe_design(times),
        **describe_memory(read(results / "memory.tsv")[1], memory_bars, names))))


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3])
