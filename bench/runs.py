"""Runs a program of Google Benchmark and reads its times; bench/ratios and bench/levels share it."""
import json, os, subprocess, tempfile

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def least_times(program, pattern, repetitions, min_time, environment=None):
    """Nanoseconds of processor time by the full name of a benchmark, the least of the interleaved repetitions."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([program, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={repetitions}",
                        "--benchmark_enable_random_interleaving=true", f"--benchmark_min_time={min_time}",
                        f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
                       env={**os.environ, **(environment or {})}, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       check=True)
        runs = json.load(open(out.name))["benchmarks"]
    times = {}
    for run in runs:
        if run["run_type"] == "iteration":
            name = run["run_name"].split("/repeats:")[0]
            time = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
            times[name] = min(time, times.get(name, float("inf")))
    return times
