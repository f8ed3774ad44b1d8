#!/usr/bin/env python3
"""Makes docs/performance.md and its plots from what the benchmarks wrote.

usage: report.py RESULTS DOCS COMMIT

RESULTS holds time.tsv, memory.tsv and instructions.tsv; DOCS gets performance.md and performance/*.svg.
"""

import collections
import math
import pathlib
import re
import statistics
import subprocess
import sys

OURS, FLOOR, KEPT = "plantjournal", "SQLite", "SQLite, kept"


def read(path):
    """The comments of a table, by their first field, and its rows as dictionaries."""
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


def title(workload, size):
    return f"{workload}, {size:,}" if size else workload


def quartiles(values):
    if len(values) == 1:
        return values * 3
    return statistics.quantiles(values, n=4, method="inclusive")


def number(value):
    return f"{value:.2f}" if value < 10 else f"{value:.0f}" if value < 1000 else f"{value:,.0f}"


class Times:
    """Nanoseconds of a step, by workload, size and medium, then by contender, then by round."""

    def __init__(self, rows):
        self.taken = collections.defaultdict(lambda: collections.defaultdict(dict))
        for row in rows:
            key = (row["workload"], int(row["size"]), row["medium"])
            self.taken[key][row["contender"]][int(row["round"])] = float(row["nanoseconds"])

    def ratios(self, key, contender, other):
        """Of turns of the same round."""
        mine, others = self.taken[key][contender], self.taken[key][other]
        return [mine[r] / others[r] for r in sorted(mine) if r in others]

    def cell(self, key, contender):
        if contender not in self.taken[key]:
            return "–"
        low, middle, high = quartiles(self.ratios(key, contender, FLOOR))
        return f"{number(middle)} ({number(low)}–{number(high)})"

    def median(self, workload, size, medium, contender=OURS):
        return statistics.median(self.taken[(workload, size, medium)][contender].values())

    def sizes(self, workload, medium):
        return sorted(s for w, s, m in self.taken if w == workload and m == medium)

    def exponent(self, workload, medium, contender=OURS):
        """The slope of the logarithm of the cost over that of the size, by least squares."""
        points = [(math.log(s), math.log(self.median(workload, s, medium, contender)))
                  for s in self.sizes(workload, medium)]
        return statistics.linear_regression(*zip(*points)).slope


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "|".join(["---"] + ["---:"] * (len(head) - 1)) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


def plot(path, script):
    """Draws with gnuplot, in colours that follow the reader's light or dark page."""
    subprocess.run(["gnuplot"], input=script, text=True, check=True, capture_output=True)
    svg = path.read_text()
    svg = re.sub(r""" color=(["'])black\1""", "", svg)
    svg = re.sub(r"""(stroke|fill)=(["'])black\2""", r"\1='currentColor'", svg)
    style = "<style>svg{color:#24292f}@media(prefers-color-scheme:dark){svg{color:#d0d7de}}</style>"
    svg = re.sub(r"(<svg[^>]*>)", r"\1\n" + style, svg, count=1, flags=re.S)
    path.write_text(re.sub(r"[ \t]+\n", "\n", svg))


COLOURS = ["#2f81f7", "#d29922", "#3fb950", "#db61a2", "#e5534b", "#986ee2", "#8b949e"]


def plot_growth(times, path):
    unit = times.median("create a care entry", 1000, "memory")
    lines = [(w, times.sizes(w, "memory")) for w in
             ("list plants", "get a plant", "list events", "delete a care entry", "strain summary",
              "create a care entry")]
    data, curves = "", []
    for index, (workload, sizes) in enumerate(lines):
        block = "\n".join(f"{s} {times.median(workload, s, 'memory') / unit}" for s in sizes)
        data += f"$d{index} << END\n{block}\nEND\n"
        curves.append(f"$d{index} with linespoints lw 2 pt {index + 4} ps 0.9 lc rgb '{COLOURS[index]}' "
                      f"title '{workload}'")
    plot(path, f"""set terminal svg size 840,480 dynamic font 'sans-serif,13'
set output '{path}'
set logscale xy
set format x '10^{{%T}}'
set format y '%g'
set xlabel 'records of the kind that grows'
set ylabel 'cost, in creations of a care entry'
set key outside right top
set grid lc rgb '#808080' lw 0.3
set border 3
set tics nomirror
{data}plot {', '.join(curves)}
""")


def plot_peers(times, contenders, path):
    keys = [k for k in times.taken if k[2] == "memory"]
    names = [c for c in contenders if c != FLOOR]
    data, curves = "", []
    for index, contender in enumerate(names):
        block = ""
        for row, key in enumerate(keys):
            if contender in times.taken[key]:
                low, middle, high = quartiles(times.ratios(key, contender, FLOOR))
                block += f"{middle} {len(keys) - row + 0.3 - 0.6 * index / len(names)} {low} {high}\n"
        data += f"$d{index} << END\n{block}END\n"
        curves.append(f"$d{index} using 1:2:3:4 with xerrorbars lw 1.5 pt 7 ps 0.5 lc rgb '{COLOURS[index]}' "
                      f"title '{contender}'")
    tics = ", ".join(f"'{title(w, s)}' {len(keys) - row}" for row, (w, s, _) in enumerate(keys))
    plot(path, f"""set terminal svg size 840,{120 + 30 * len(keys)} dynamic font 'sans-serif,13'
set output '{path}'
set logscale x
set xtics (0.125, 0.25, 0.5, 1, 2, 4, 8, 16, 32)
set yrange [0.3:{len(keys) + 0.7}]
set ytics ({tics})
set xlabel 'time, in those of bare SQLite; in memory'
set key at screen 0.5,0.99 center top horizontal maxcols 3 samplen 2
set tmargin 5
set grid x lc rgb '#808080' lw 0.3
set border 3
set tics nomirror
set arrow from 1,graph 0 to 1,graph 1 nohead lw 1.5 lc rgb '#808080'
{data}plot {', '.join(curves)}
""")


def main(results, docs, commit):
    about, rows = read(results / "time.tsv")
    times = Times(rows)
    _, memory = read(results / "memory.tsv")
    _, instructions = read(results / "instructions.tsv")
    versions = dict(about["contender"])
    contenders = list(versions)
    absent = [name for name, in about["absent"]]
    rounds = max(int(row["round"]) for row in rows)
    fewest = min(len(t) for by in times.taken.values() for t in by.values())
    pictures = docs / "performance"
    pictures.mkdir(exist_ok=True)
    plot_growth(times, pictures / "growth.svg")
    plot_peers(times, contenders, pictures / "peers.svg")

    counts = table(["operation", "of the floor's", "bar"], [
        [title(row["workload"], int(row["size"])),
         f"{float(row['plantjournal']) / float(row['floor']):.3f}" if float(row["bar"]) < 10
         else f"{float(row['plantjournal']):,.0f} instructions",
         row["bar"] if float(row["bar"]) < 10 else f"{float(row['bar']):,.0f} instructions"]
        for row in instructions])

    def ratios(medium):
        return table(["operation"] + [c for c in contenders if c != FLOOR], [
            [title(w, s)] + [times.cell((w, s, m), c) for c in contenders if c != FLOOR]
            for w, s, m in times.taken if m == medium])

    heap = collections.defaultdict(dict)
    for row in memory:
        heap[(row["workload"], int(row["size"]))][row["contender"]] = (float(row["allocations"]), float(row["peak"]))
    lists = [k for k in heap if k[0].startswith("list ")]
    allocations = table(["list"] + contenders, [
        [title(*k)] + [f"{heap[k][c][0] / k[1]:.2f}" if c in heap[k] else "–" for c in contenders] for k in lists])
    peaks = table(["list"] + contenders, [
        [title(*k)] + [f"{heap[k][c][1] / heap[k][FLOOR][1]:.2f}" if c in heap[k] else "–" for c in contenders]
        for k in lists if k[1] >= 10_000])

    growing = [(w, m) for m in ("memory", "disk")
               for w in dict.fromkeys(w for w, s, medium in times.taken if s) if len(times.sizes(w, m)) > 1]
    growth = table(["operation", "grows with", "from", "to", "exponent in memory", "on disk"], [
        [w, {"list events": "the plant's events", "delete a care entry": "the care log",
             "create a care entry": "the care log", "update a care entry": "the care log"}.get(w, "the plants"),
         f"{times.sizes(w, 'memory')[0]:,}", f"{times.sizes(w, 'memory')[-1]:,}",
         f"{times.exponent(w, 'memory'):.2f}", f"{times.exponent(w, 'disk'):.2f}"]
        for w in dict.fromkeys(w for w, _ in growing)])

    def times_of(workload, size, other, other_size, medium):
        return times.median(workload, size, medium) / times.median(other, other_size, medium)

    def kept(workload, size, medium):
        return statistics.median(times.ratios((workload, size, medium), FLOOR, KEPT))

    delete = "delete a plant with 500 care entries"
    entry = "create a care entry"
    ours_below = [k for k in times.taken if OURS in times.taken[k]
                  and statistics.median(times.ratios(k, OURS, FLOOR)) <= 1.02]
    text = f"""# Performance

What the library costs over bare SQLite, how it stands beside what people would use instead, and what to expect of a
journal that has grown for ten years. Made by `./dev bench` from one run, at commit {commit}; all figures are ratios, since an absolute time
says more about a machine than about a library.

## What was measured

One program of a front end's operations, written once for each contender, with the same statements in the same order:

{chr(10).join(f"- {about_contender(name, version)}" for name, version in versions.items())}
{''.join(f"{chr(10)}Absent on this machine: {name}." for name in absent)}
Before anything is timed, `bench_check` proves that all of them fill the same records and leave the same file, to the
last byte of every row: on a new file, on every older form, and after each of the workloads but the one
that takes seconds, which a day on a small file has, too. What is no matter of the
database (names of enumerations, composed texts, the walk up the mothers) is written once, plainly, for all but
plantjournal.

- **Times**: Google Benchmark runs each step of a workload. In each of {rounds} rounds (at least {fewest} where one takes
  seconds) every contender takes its turn, in random order, after a round that only warms up. A ratio is made from two
  turns of the same round; shown are the median and, in brackets, the quartiles. In memory, and in a file on disk with
  SQLite's full durability.
- **Instructions**: callgrind counts those of the small operations and the lists, for the library and for the floor, in
  one run. `.ci/run` holds them against bars.
- **Heap**: every allocation is counted, SQLite's too.

Compiler: {about['compiler'][0][0]}. SQLite {about['SQLite'][0][0]} as Debian builds it, with
{', '.join(f"`{option}`" for option, in about['SQLite option'] if option in OPTIONS)}. Every
connection is in serialised mode but that of Qt, whose driver opens it without SQLite's mutex. The sizes are those of what grows: of a list, the records listed; of care entries, the
care log; otherwise the plants. Half of the plants are clones, a third are harvested; texts are short.

To repeat it: `./dev bench`. To hold the counts against their bars alone: `./dev bars`.

## Beside the floor: instructions

Of each 1.000 instructions that bare calls to SQLite need, with every statement prepared for its call, the library needs:

{counts}

It needs fewer than a plainly written program since it fills records in place, composes texts without streams, and
compares names as views. A write of several tables keeps memory back for its rollback, which a plain program does not.
Listing plants is the nearest to the floor: nearly all of it is SQLite's sorting and reading. The bars are those of this
compiler and this SQLite, and held where both are at hand; other compilers make more of the plain program's texts.

## Beside the floor and the peers: time

1.00 is bare SQLite with its statements prepared for each call.

![Time of each operation for each contender, in those of bare SQLite](performance/peers.svg)

In memory:

{ratios("memory")}

On disk, where waiting for the disk is most of every write:

{ratios("disk")}

## Heap

Allocations for each record listed:

{allocations}

The most that a list held at a time, beside the floor's:

{peaks}

## Growth

An exponent of 1 means that ten times as many records take ten times as long; of 0, that their number does not matter.

![Cost against size](performance/growth.svg)

{growth}

## What the design costs, and why

**Statements are prepared for each call.** Nothing is kept between calls: no cache that could go stale, nothing to reset
after a failure, nothing that is left open. Beside kept statements that costs, in memory, a factor of
{kept("list events", 10, "memory"):.1f} for a list of ten events, {kept(entry, 1000, "memory"):.1f} for a care entry,
{kept("list events", 1000, "memory"):.2f} for a list of 1,000 events and {kept("list plants", 1000, "memory"):.2f} for
1,000 plants. On disk, a care entry costs {kept(entry, 1000, "disk"):.2f} times as much: the disk takes the time.

**A plant is fetched through the whole list.** So a fetched plant is what a listed one is, by the same statement. It
takes as long as the list (exponent {times.exponent("get a plant", "memory"):.2f}): among 1,000 plants
{times_of("get a plant", 1000, "list events", 10, "memory"):.0f} times as long as a list of ten events, among 10,000
{times_of("get a plant", 10000, "list events", 10, "memory"):,.0f} times. A front end that shows many plants lists them
once. A plant with a mother is created in the same way: among 1,000 plants a clone takes
{times_of("create a clone", 1000, "create a plant", 1000, "memory"):.0f} times as long as a plant without a mother in
memory, and {times_of("create a clone", 1000, "create a plant", 1000, "disk"):.1f} times on disk.

**Deleting an event looks through the whole care log.** A care entry links to its event; the file has no index by that
link, and growers carry their files from version to version, so none will be added. Whatever deletes an event pays for
it: deleting a care entry (exponent {times.exponent("delete a care entry", "memory"):.2f}), a harvest, a plant. Among
100,000 care entries, ten years of 27 entries a day, deleting one takes
{times_of("delete a care entry", 100000, entry, 100000, "memory"):.0f} times as long as creating one in memory, and
{times_of("delete a care entry", 100000, entry, 100000, "disk"):.0f} times on disk. Deleting a plant with 500 of them
looks through the log 500 times: it takes as long as creating
{times_of(delete, 100000, entry, 100000, "disk"):,.0f} care entries on disk, one after the other, holds the write lock
all the while, and makes every other writer wait out its 2.5 seconds. Show that it works, and do not delete plants in a
loop; archive them (`PlantStage::Archived`) where they should only be out of the way.

**An old file is brought up to date once.** With 100,000 events that takes as long as
{times_of("open an old file", 100000, "open a current file", 0, "disk"):,.0f} openings of a current file, of which
each later opening takes one. A new file takes {times_of("open a new file", 0, "open a current file", 0, "disk"):.0f}.
"""
    if len(ours_below) < len(times.taken):
        slower = [title(w, s) + (" in memory" if m == "memory" else " on disk")
                  for w, s, m in times.taken if (w, s, m) not in ours_below]
        text += ("\nIn this run the library's median was more than 2 % above the floor's here: "
                 + "; ".join(slower) + ".\n")
    (docs / "performance.md").write_text(fill(text))


def about_contender(name, version):
    return {
        OURS: f"**plantjournal {version}**",
        FLOOR: "**SQLite**: bare calls to its C interface, every statement prepared for its call, as the library does. "
               "**The floor**: what the library costs beyond this is its own.",
        KEPT: "**SQLite, kept**: the same with statements that are prepared once and kept: what the design gives up.",
    }.get(name, f"**{name} {version}**, as its documentation would have it used")


# Those of SQLite's options that bear on what is measured.
OPTIONS = {"THREADSAFE=1", "SECURE_DELETE", "OMIT_LOOKASIDE", "DEFAULT_SYNCHRONOUS=2", "TEMP_STORE=1",
           "DEFAULT_CACHE_SIZE=-2000", "SYSTEM_MALLOC", "MUTEX_PTHREADS"}


def fill(text):
    """Breaks the lines of paragraphs again, since figures differ in length."""
    import textwrap
    paragraphs = []
    for paragraph in text.split("\n\n"):
        if re.match(r"^\s*(\||#|!|- )", paragraph) and not paragraph.lstrip().startswith("- "):
            paragraphs.append(paragraph)
        elif paragraph.lstrip().startswith("- "):
            items = re.split(r"\n(?=- )", paragraph.strip("\n"))
            paragraphs.append("\n".join(textwrap.fill(" ".join(i.split()), 120, subsequent_indent="  ",
                                                       break_long_words=False, break_on_hyphens=False)
                                        for i in items))
        else:
            paragraphs.append(textwrap.fill(" ".join(paragraph.split()), 120, break_long_words=False,
                                            break_on_hyphens=False))
    return "\n\n".join(paragraphs).rstrip("\n") + "\n"


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3])
