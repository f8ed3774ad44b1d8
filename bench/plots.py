"""The plots of docs/performance.md, drawn by gnuplot."""

import re
import subprocess

COLOURS = ["#2f81f7", "#d29922", "#3fb950", "#db61a2", "#e5534b", "#986ee2", "#8b949e"]


def plot(path, script):
    """Draws with gnuplot, in colours that follow the reader's light or dark page."""
    subprocess.run(["gnuplot"], input=f"set output '{path}'\n{script}", text=True, check=True, capture_output=True)
    svg = path.read_text()
    svg = re.sub(r""" color=(["'])black\1""", "", svg)
    svg = re.sub(r"""(stroke|fill)=(["'])black\2""", r"\1='currentColor'", svg)
    style = "<style>svg{color:#24292f}@media(prefers-color-scheme:dark){svg{color:#d0d7de}}</style>"
    svg = re.sub(r"(<svg[^>]*>)", r"\1\n" + style, svg, count=1, flags=re.S)
    path.write_text(re.sub(r"[ \t]+\n", "\n", svg))


def draw(path, size, settings, curves):
    """Each curve is its title, its points, and how gnuplot draws them."""
    blocks = "".join(f"$d{index} << END\n{points}\nEND\n" for index, (_, points, _) in enumerate(curves))
    drawn = ", ".join(f"$d{index} {style} lc rgb '{COLOURS[index]}' title '{title}'"
                      for index, (title, _, style) in enumerate(curves))
    plot(path, f"""set terminal svg size {size} dynamic font 'sans-serif,13'
set border 3
set tics nomirror
{settings}
{blocks}plot {drawn}
""")


def plot_growth(times, path):
    unit = times.median("create a care entry", 1000, "memory")
    workloads = ("list plants", "get a plant", "list events", "delete a care entry", "strain summary",
                 "create a care entry")
    draw(path, "840,480", """set logscale xy
set format x '10^{%T}'
set format y '%g'
set xlabel 'number of records'
set ylabel 'time, relative to the creation of a care entry'
set key outside right top
set grid lc rgb '#808080' lw 0.3""", [
        (workload,
         "\n".join(f"{size} {times.median(workload, size, 'memory') / unit}"
                   for size in times.sizes(workload, "memory")),
         f"with linespoints lw 2 pt {index + 4} ps 0.9")
        for index, workload in enumerate(workloads)])


def plot_peers(times, names, path):
    """One row for each workload, and in it one mark for each implementation."""
    rows = [key for key in times.taken if key[2] == "memory"]
    curves = []
    for index, name in enumerate(names):
        points = []
        for row, key in enumerate(rows):
            if name in times.taken[key]:
                low, middle, high = times.quartiles(key, name)
                points.append(f"{middle} {len(rows) - row + 0.3 - 0.6 * index / len(names)} {low} {high}")
        curves.append((name, "\n".join(points), "using 1:2:3:4 with xerrorbars lw 1.5 pt 7 ps 0.5"))
    tics = ", ".join(f"'{times.title(key)}' {len(rows) - row}" for row, key in enumerate(rows))
    draw(path, f"840,{120 + 30 * len(rows)}", f"""set logscale x
set xtics (0.125, 0.25, 0.5, 1, 2, 4, 8, 16, 32)
set yrange [0.3:{len(rows) + 0.7}]
set ytics ({tics})
set xlabel 'time, relative to bare SQLite; in memory'
set key at screen 0.5,0.99 center top horizontal maxcols 3 samplen 2
set tmargin 5
set grid x lc rgb '#808080' lw 0.3
set arrow from 1,graph 0 to 1,graph 1 nohead lw 1.5 lc rgb '#808080'""", curves)
