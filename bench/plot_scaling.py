#!/usr/bin/python3
"""Scaling curves of the point loops from bench_geom's JSON output.

Reads Google Benchmark's JSON (--benchmark_out=FILE --benchmark_out_format=json) and, for
the rows that run over a range of point counts (TransformPoints_*, RotatePoints_*,
CopyPoints_*), writes a Markdown table of CPU time per point and of the ratios the
targets name, and a PNG with one panel per operation (time per point against points,
both axes logarithmic). With repetitions, the median is used; without, the mean of the
runs.

    build/bench/bench/bench_geom --benchmark_filter='Points' --benchmark_repetitions=3 \\
        --benchmark_out=scaling.json --benchmark_out_format=json
    bench/plot_scaling.py scaling.json --table scaling.md --plot scaling.png
"""

import argparse
import collections
import json
import re
import sys

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
# Row name: family, optional path (dispatched, sse2, avx2, avx512), point count.
ROW = re.compile(r"^(?P<family>(?:Transform|Rotate|Copy)Points_[A-Za-z]+)"
                 r"(?:/(?P<path>dispatched|sse2|avx2|avx512))?/(?P<n>\d+)$")


def load(path):
    """{(series, n): ns per point}, {series: label of the path it ran}."""
    with open(path, encoding="utf-8") as f:
        data = json.load(f)
    medians = {}
    runs = collections.defaultdict(list)
    labels = {}
    for b in data["benchmarks"]:
        name = b.get("run_name", b["name"])
        m = ROW.match(name)
        if not m or b.get("error_occurred"):
            continue
        series = m["family"] + (f"/{m['path']}" if m["path"] else "")
        n = int(m["n"])
        ns = b["cpu_time"] * UNIT_NS[b.get("time_unit", "ns")] / n
        if b.get("run_type") == "aggregate":
            if b.get("aggregate_name") == "median":
                medians[(series, n)] = ns
        else:
            runs[(series, n)].append(ns)
        if b.get("label"):
            labels[series] = b["label"]
    values = dict(medians)
    for key, samples in runs.items():
        values.setdefault(key, sum(samples) / len(samples))
    return values, labels


def series_name(series, labels):
    label = labels.get(series)
    return f"{series} ({label})" if label and series.endswith("dispatched") else series


def table(values, labels):
    sizes = sorted({n for _, n in values})
    all_series = sorted({s for s, _ in values})
    out = ["| Row (ns per point) | " + " | ".join(f"{n:,}" for n in sizes) + " |",
           "|---|" + "---|" * len(sizes)]
    for s in all_series:
        cells = [f"{values[(s, n)]:.3g}" if (s, n) in values else "" for n in sizes]
        out.append(f"| `{series_name(s, labels)}` | " + " | ".join(cells) + " |")

    # The targets: ours against the copy loop, and against the better of Eigen and glm.
    out += ["", "| Ratio | " + " | ".join(f"{n:,}" for n in sizes) + " |",
            "|---|" + "---|" * len(sizes)]
    for op in ("TransformPoints", "RotatePoints"):
        for ours in (f"{op}_Geom", f"{op}_GeomBatch/dispatched"):
            for floor, what in ((("CopyPoints_loop",), "copy loop"),
                                ((f"{op}_Eigen", f"{op}_glm"), "best of Eigen, glm")):
                cells = []
                for n in sizes:
                    peers = [values[(p, n)] for p in floor if (p, n) in values]
                    cells.append(f"{values[(ours, n)] / min(peers):.2f}"
                                 if (ours, n) in values and peers else "")
                out.append(f"| `{series_name(ours, labels)}` / {what} | " + " | ".join(cells) + " |")
    return "\n".join(out) + "\n"


def plot(values, labels, path):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    all_series = sorted({s for s, _ in values})
    fig, axes = plt.subplots(1, 2, figsize=(13, 5), sharey=True)
    for ax, op in zip(axes, ("TransformPoints", "RotatePoints")):
        for s in all_series:
            if not (s.startswith(op) or s.startswith("CopyPoints")):
                continue
            pts = sorted((n, v) for (t, n), v in values.items() if t == s)
            style = "--" if s.startswith("CopyPoints") else "-"
            ax.plot([n for n, _ in pts], [v for _, v in pts], style, marker="o",
                    label=series_name(s, labels))
        ax.set_xscale("log")
        ax.set_yscale("log")
        ax.set_xlabel("points (24 bytes in, 24 bytes out each)")
        ax.set_title(op)
        ax.grid(True, which="both", alpha=0.3)
        ax.legend(fontsize=7)
    axes[0].set_ylabel("CPU time per point (ns)")
    fig.tight_layout()
    fig.savefig(path, dpi=110)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("json", help="Google Benchmark JSON output of bench_geom")
    parser.add_argument("--table", help="write the Markdown table here (default: stdout)")
    parser.add_argument("--plot", help="write the PNG plot here")
    args = parser.parse_args()
    values, labels = load(args.json)
    if not values:
        sys.exit(f"{args.json}: no point-loop rows with a point count")
    text = table(values, labels)
    if args.table:
        with open(args.table, "w", encoding="utf-8") as f:
            f.write(text)
    else:
        sys.stdout.write(text)
    if args.plot:
        plot(values, labels, args.plot)


if __name__ == "__main__":
    main()
