"""Runs the benchmarks and prints their figures as one table.

Every ratio compares figures of one run of one program, or of programs run in turn. Figures are medians.

  report.py measure [--quick] [PART...]   prints all or the named parts as a table, and writes build/bench.json
  report.py check OLD NEW                 compares the instruction counts of two builds of the fixed operations
  report.py costs                         compares the library's size and the counts with operations/counts.txt
  report.py update                        measures and writes that file
"""

import json
import os
import re
import resource
import statistics
import subprocess
import sys
import tempfile
from pathlib import Path

RELEASE = Path("build/release").absolute()
SHARED = Path("build/release-shared").absolute()
BENCHMARKS = RELEASE / "benchmarks"
OPERATIONS = Path("build/operations/operations")
COUNTS = Path("benchmarks/operations/counts.txt")
MOST_GROWTH = 0.03
LARGEST_LIBRARY = 430_000  # bytes, stripped


def run(command, **options):
    return subprocess.run([str(each) for each in command], check=True, capture_output=True, text=True, **options).stdout


def environment():
    """Qt without a display, drawing on the processor."""
    runtime = tempfile.mkdtemp(prefix="talvo-bench-")
    return {**os.environ, "QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software", "XDG_RUNTIME_DIR": runtime,
            "QT_SCALE_FACTOR": "2"}


class Figures:
    """The medians of the repetitions of one benchmark program, by name, in nanoseconds."""

    def __init__(self, program, quick, env, time_name="cpu_time", interleaved=True, repetitions=9, seconds=0.2,
                 only=".*", on_one_processor=False):
        command = [*(["taskset", "--cpu-list", "0"] if on_one_processor else []), BENCHMARKS / program,
                   "--benchmark_format=json", f"--benchmark_filter={only}", "--benchmark_report_aggregates_only=true",
                   f"--benchmark_min_time={0.05 if quick else seconds}",
                   f"--benchmark_repetitions={3 if quick else repetitions}"]
        if interleaved:  # so that other load on the machine affects all benchmarks alike
            command.append("--benchmark_enable_random_interleaving=true")
        units = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
        self.values, self.processor, self.pairs = {}, {}, {}
        for each in json.loads(run(command, env=env, cwd=BENCHMARKS))["benchmarks"]:
            if each.get("error_occurred"):
                raise SystemExit(f"{program}: {each['name']}: {each['error_message']}")
            if each["aggregate_name"] == "median":
                name = re.sub("/(process_time|real_time|iterations:[0-9]+)", "", each["run_name"])
                self.values[name] = each[time_name] * units[each["time_unit"]]
                self.processor[name] = each["cpu_time"] * units[each["time_unit"]]
                self.pairs[name] = {key: each[key] for key in ("ours", "bare", "ratio") if key in each}

    def __getitem__(self, name):
        return self.values[name]


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


class Table:
    def __init__(self):
        self.rows = []

    def add(self, what, ours, peer=None, limit=None, ratio=None, budget=None, show=duration, peer_name="", limit_name=""):
        """`budget` is a pair: its text, and whether it is met."""
        cell = lambda value, name: "" if value is None else f"{show(value)} {name}".strip()
        if ratio is None and (peer or limit):
            ratio = ours / (limit or peer)
        self.rows.append({
            "what": what, "ours": cell(ours, ""), "peer": cell(peer, peer_name), "limit": cell(limit, limit_name),
            "ratio": "" if ratio is None else f"{ratio:.2f}", "budget": budget[0] if budget else "",
            "inside": "" if not budget else "yes" if budget[1] else "NO",
            "values": {"ours": ours, "peer": peer, "limit": limit, "ratio": ratio}})

    def text(self):
        names = ["what", "ours", "peer", "limit", "ratio", "budget", "inside"]
        widths = [max(len(name), *(len(row[name]) for row in self.rows)) for name in names]
        line = lambda cells: "| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |"
        rule = "|" + "|".join("-" * (width + 2) for width in widths) + "|"
        return "\n".join([line(names), rule] + [line([row[name] for name in names]) for row in self.rows])

    def require_budgets(self):
        if any(row["inside"] == "NO" for row in self.rows):
            raise SystemExit("Some figures are outside their budgets.")


def within(ratio, most):
    return (f"<= {most:g} x", ratio <= most)


def records(table, quick, env):
    figures = Figures("codec_benchmark", quick, env)
    for name in ("BannerCustomization", "CategoryItem", "BasicConsent", "ConsentResponse", "FullConsent", "Services",
                 "SiteConfiguration"):
        table.add(f"decode {name}", figures[f"decode/ours/{name}"], figures[f"decode/nlohmann-untyped/{name}"],
                  figures[f"decode/parse/{name}"], peer_name="nlohmann, untyped", limit_name="simdjson parse")
        table.add(f"encode {name}", figures[f"encode/ours/{name}"], figures[f"encode/nlohmann-untyped/{name}"],
                  peer_name="nlohmann, untyped")
    for count in (100, 10_000, 200_000):
        of = lambda name: figures[f"services/{name}/{count}"]
        ours = of("decode/ours")
        what = f"decode {count:,} services"
        faster, share = of("decode/nlohmann") / ours, of("decode/limit") / ours
        table.add(what, ours, of("decode/nlohmann"), ratio=faster, peer_name="nlohmann, typed",
                  budget=(">= 5 x as fast", faster >= 5))
        table.add(what, ours, of("decode/rapidjson"), ratio=of("decode/rapidjson") / ours,
                  peer_name="RapidJSON, typed (x as fast)")
        table.add(what, ours, limit=of("decode/limit"), ratio=share, limit_name="parse + one copy",
                  budget=(">= 0.6 of the limit", share >= 0.6))
        table.add(what, ours, limit=of("memcpy"), limit_name="memcpy of the text")
        table.add(f"encode {count:,} services", of("encode/ours"), of("encode/nlohmann-untyped"), of("memcpy"),
                  peer_name="nlohmann, untyped", limit_name="memcpy of the text")
    counts = (10, 100, 1_000, 10_000, 100_000)
    for count in counts:
        table.add(f"category index, {count:,} services", figures[f"index/{count}"],
                  limit=figures[f"index/limit-copy/{count}"], limit_name="copy of the records")
    for count in counts:
        table.add(f"grouping, {count:,} services", figures[f"grouping/{count}"])


def store(table, quick, env):
    figures = Figures("store_benchmark", quick, env, "real_time")
    ours = figures["save/ours"]
    ratio = ours / figures["save/bare-sqlite"]
    table.add("durable save", ours, limit=figures["save/bare-sqlite"], limit_name="bare SQLite", budget=within(ratio, 1.5))
    table.add("durable save", ours, figures["save/qsettings"], peer_name="QSettings")
    table.add("getConsent", figures["getConsent/ours"], limit=figures["getConsent/bare-sqlite-read"],
              limit_name="bare SQLite read")
    runs = [json.loads(run([BENCHMARKS / "creation", order], cwd=BENCHMARKS))
            for order in ("ours-first", "bare-first") * (5 if quick else 20)]
    ours, limit = (statistics.median(each[name] for each in runs) * 1e3 for name in ("createInstance", "openAndRead"))
    table.add("createInstance", ours, limit=limit, limit_name="open + read two keys", budget=within(ours / limit, 2))


def transport(table, quick, env):
    # With one request in flight, client and server take turns. They run on one processor, because waking another one
    # takes longer than the request, and that time varies.
    pairs = {flight: Figures("transport_benchmark", quick, env, repetitions=45, only=f"/{flight}/|submission",
                             on_one_processor=flight == 1).pairs for flight in (1, 32)}
    for method in ("GET", "POST"):
        for flight, figures in pairs.items():
            pair = figures[f"requests/{method}/{flight}"]
            table.add(f"1,000 {method} requests, {flight} in flight", pair["ours"], limit=pair["bare"], ratio=pair["ratio"],
                      limit_name="bare libcurl multi", budget=within(pair["ratio"], 1.2))
    for flight, figures in pairs.items():
        pair = figures[f"hits/{flight}"]
        table.add(f"1,000 replies from the cache, {flight} in flight", pair["ours"], limit=pair["bare"], ratio=pair["ratio"],
                  limit_name="the same requests", budget=("<= 1/3", pair["ratio"] <= 1 / 3))
    pair = pairs[32]["submission"]
    table.add("submission on loopback", pair["ours"], limit=pair["bare"], ratio=pair["ratio"],
              limit_name="bare libcurl + SQLite")


def events(table, quick, env):
    figures = Figures("event_benchmark", quick, env)
    for count in (0, 1, 100):
        table.add(f"event, {count} listeners", figures[f"events/ours/{count}"], limit=figures[f"events/direct-calls/{count}"],
                  limit_name="direct calls")


def banner(table, quick, env):
    # A window's first frames are slower, and with interleaving nothing else would be measured.
    figures = Figures("banner_benchmark", quick, env, "real_time", interleaved=False)
    counts = (10, 200, 1_000, 10_000)
    for name, what in (("render", "render"), ("compare", "compare, nothing changed"), ("layout", "layout"),
                       ("mount", "mount"), ("firstFrame", "first frame"), ("openCategory", "open a category"),
                       ("beginToOpen", "open a category, first frame of the motion"),
                       ("goOnOpening", "open a category, five more frames"),
                       ("switchVendor", "one switch to frame"), ("switchCategory", "switch a category to frame"),
                       ("scrollHundredFrames", "scroll 100 frames")):
        for count in counts:
            work, of_ten = figures.processor[f"{name}/{count}"], figures.processor[f"{name}/10"]
            ratio, budget = work / of_ten, None
            if name in ("openCategory", "beginToOpen") and count == 1_000:
                budget = within(ratio, 3)
            if name == "switchVendor" and count == 10_000:
                budget = ("grows < 1,000 x", ratio < 1_000)
            table.add(f"{what}, {count:,} vendors", work, ratio=ratio, budget=budget)
            if name == "beginToOpen" and count == 1_000:
                at_once = figures.processor[f"openCategory/{count}"]
                table.add(f"{what}, {count:,} vendors", work, at_once, peer_name="without motion",
                          budget=within(work / at_once, 1))
            if name == "goOnOpening" and count == 1_000:
                frame = figures.processor[f"scrollHundredFrames/{count}"] / 100
                table.add("... each of them", work / 5, frame, peer_name="frame of scrolling",
                          budget=within(work / 5 / frame, 2))
            if name == "switchVendor" and count == 1_000:
                frame = figures.processor[f"scrollHundredFrames/{count}"] / 100
                table.add(f"{what}, {count:,} vendors", work, frame, peer_name="frame of scrolling",
                          budget=within(work / frame, 2))
            if name == "switchVendor":
                table.add("... until it is on screen, including a display refresh", figures[f"{name}/{count}"])


def memory(process):
    """The proportional set size, in kB."""
    text = Path(f"/proc/{process.pid}/smaps_rollup").read_text()
    return int(re.search(r"^Pss:\s+(\d+)", text, re.MULTILINE).group(1))


def bare_window(env):
    with subprocess.Popen([BENCHMARKS / "bare_window"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True, env=env) as process:
        first = json.loads(process.stdout.readline())["process_to_first_frame_ms"]
        used = memory(process)
        process.communicate("\n")
    return first, used


def banner_process(env, url, site):
    """One run of the sample host up to its banner."""
    with tempfile.TemporaryDirectory() as folder:
        command = [RELEASE / "apps/host/talvo-host", "--api-url", url, "--site", site, "--store", folder + "/store",
                   "--script", "-"]
        with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              env=env) as process:
            replies = iter(process.stdout.readline, "")
            process.stdin.write("banner\ntiming\n")
            process.stdin.flush()
            timing = next(reply for reply in map(json.loads, replies) if "timing" in reply)["timing"]
            used = memory(process)
            process.communicate("quit\n")
    return (timing["process_to_first_frame_ms"], timing["show_to_first_frame_ms"], used,
            timing["first_frame_processor_ms"])


def processes(table, quick, env):
    env = {name: value for name, value in env.items() if name != "QT_SCALE_FACTOR"}
    service = subprocess.Popen([RELEASE / "apps/consent-service/talvo-consent-service", "--port", "0"],
                               stdout=subprocess.PIPE, text=True)
    try:
        url = service.stdout.readline().removeprefix("listening on ").strip()
        bare, demo, large = [], [], []
        for _ in range(5 if quick else 15):
            bare.append(bare_window(env))
            demo.append(banner_process(env, url, "demo"))
            large.append(banner_process(env, url, "large"))
    finally:
        service.terminate()
        service.wait()
    median = lambda runs, index: statistics.median(each[index] for each in runs)
    window, megabytes = median(bare, 0) * 1e6, lambda kilobytes: f"{kilobytes / 1024:.1f} MB"
    for name, runs in (("demo", demo), ("large", large)):
        table.add(f"process start to banner's first frame, {name} site", median(runs, 0) * 1e6, window,
                  peer_name="bare window")
        table.add(f"showBanner to first frame, {name} site", median(runs, 1) * 1e6)
        table.add(f"memory (PSS), {name} site", median(runs, 2), median(bare, 1), peer_name="bare window", show=megabytes)


def draw_process(env, *arguments):
    """One run of the program that shows a banner as draw lists, or no banner."""
    with tempfile.TemporaryDirectory() as folder:
        arguments = [*arguments, folder + "/store"] if arguments else []
        with subprocess.Popen([BENCHMARKS / "draw_process", *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              text=True, env={**env, "SDL_VIDEODRIVER": "dummy"}) as process:
            figures = json.loads(process.stdout.readline())
            figures["memory"] = memory(process)
            process.communicate("\n")
    return figures


def draw(table, quick, env):
    service = subprocess.Popen([RELEASE / "apps/consent-service/talvo-consent-service", "--port", "0"],
                               stdout=subprocess.PIPE, text=True)
    try:
        url = service.stdout.readline().removeprefix("listening on ").strip()
        bare, demo, large, qt = [], [], [], []
        for _ in range(5 if quick else 15):
            bare.append(draw_process(env))
            demo.append(draw_process(env, url, "demo"))
            large.append(draw_process(env, url, "large"))
            qt.append(banner_process(env, url, "demo")[3])
    finally:
        service.terminate()
        service.wait()
    median = lambda runs, name: statistics.median(each[name] for each in runs)
    ours, without = median(demo, "processor_ms") * 1e6, median(bare, "processor_ms") * 1e6
    what = "processor time to the first draw list, demo site"
    table.add(what, ours, without, peer_name="without banner", budget=within(ours / without, 1.6))
    window = statistics.median(qt) * 1e6
    table.add(what, ours, window, peer_name="Qt, first frame", budget=within(ours / window, 0.5))
    megabytes = lambda kilobytes: f"{kilobytes / 1024:.1f} MB"
    for name, runs, most in (("demo", demo, 6), ("large", large, 8)):
        used, bare_used = median(runs, "memory"), median(bare, "memory")
        table.add(f"memory (PSS) with draw lists, {name} site", used, bare_used, peer_name="without banner", show=megabytes,
                  budget=(f"<= {most} MB more", used - bare_used <= most * 1024))
    calls = max(each["draw_calls"] for each in demo)
    table.add("draw calls of the first screen, one picture", calls, show=str, budget=("<= 6", calls <= 6))
    for name, what in (("still_uploads", "uploads"), ("still_lists", "new lists")):
        most = max(each[name] for each in demo + large)
        table.add(f"{what} in 100 frames of a still banner", most, show=str, budget=("0", most == 0))
    figures = Figures("draw_benchmark", quick, env)
    ten, thousand = figures["listAfterSwitch/10"], figures["listAfterSwitch/1000"]
    table.add("one switch to draw list, 10 vendors", ten)
    table.add("one switch to draw list, 1,000 vendors", thousand, ten, peer_name="10 vendors", budget=within(thousand / ten, 3))


def processor_time_of_children():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def stripped_size(library):
    with tempfile.TemporaryDirectory() as folder:
        run(["strip", "-o", f"{folder}/stripped", library])
        return Path(f"{folder}/stripped").stat().st_size


def is_optimised_as_a_whole():
    text = (SHARED / "CMakeCache.txt").read_text()
    return re.search(r"^TALVO_OPTIMIZES_WHOLE_LIBRARIES:INTERNAL=(1|ON|TRUE|YES)$", text, re.MULTILINE) is not None


def size_of_the_library():
    return stripped_size(SHARED / "TalvoConsentSDK/libTalvoConsentSDK.so")


def add_optimisation(table):
    optimised = is_optimised_as_a_whole()
    table.add("whole-library optimisation", optimised, show=lambda on: "on" if on else "off", budget=("on", optimised))


def add_size(table):
    add_optimisation(table)
    size = size_of_the_library()
    table.add("stripped size of libTalvoConsentSDK.so", size, show=kilobytes,
              budget=(f"< {kilobytes(LARGEST_LIBRARY)}", size < LARGEST_LIBRARY))


def kilobytes(size):
    return f"{size / 1000:.0f} kB"


def sizes(table, quick, env):
    add_size(table)
    for library in sorted(SHARED.glob("**/libTalvoConsent*.so")):
        if library.name != "libTalvoConsentSDK.so":
            size, most = stripped_size(library), {"libTalvoConsentDraw.so": 200_000}.get(library.name)
            budget = (f"< {kilobytes(most)}", size < most) if most else None
            table.add(f"stripped size of {library.name}", size, show=kilobytes, budget=budget)
        needed = len(re.findall(r"\(NEEDED\)", run(["readelf", "-d", library])))
        table.add(f"dynamic dependencies of {library.name}", needed, show=str)
    programs = {name: [] for name in ("linked", "unlinked")}
    for _ in range(20 if quick else 200):
        for name, times in programs.items():
            start = processor_time_of_children()
            run([SHARED / "benchmarks" / name])
            times.append(processor_time_of_children() - start)
    ours, peer = (statistics.median(programs[name]) * 1e9 for name in ("linked", "unlinked"))
    table.add("a process that links the library, unused", ours, peer, peer_name="without it; processor time")


def instructions(program, operation):
    with tempfile.TemporaryDirectory() as folder:
        # Strip debug information that valgrind may be too old to read.
        stripped = f"{folder}/{Path(program).name}"
        run(["strip", "--strip-debug", "-o", stripped, program])
        result = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/out",
                                 "--toggle-collect=talvoMeasured", stripped, operation],
                                check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", result.stderr).group(1))


def counted(program):
    return {operation: instructions(program, operation) for operation in run([program]).split()}


def counts(table, quick, env):
    for operation, count in counted(OPERATIONS).items():
        table.add(f"instructions: {operation}", count, show=lambda n: f"{n:,}")


def costs_now():
    return {"library-bytes": size_of_the_library(), **counted(OPERATIONS)}


def compare(before, after):
    """Fails if a figure has grown too much, or is missing on one side."""
    wrong = sorted(before.keys() ^ after.keys())
    for operation in sorted(before.keys() & after.keys()):
        growth = after[operation] / before[operation] - 1
        print(f"{operation:22}{before[operation]:>14,} -> {after[operation]:>14,}  {growth:+.2%}")
        if growth > MOST_GROWTH:
            wrong.append(operation)
    if wrong:
        raise SystemExit(f"Grew by more than {MOST_GROWTH:.0%}, or missing on one side: {', '.join(wrong)}")


def kept_counts():
    rows = (line.split() for line in COUNTS.read_text().splitlines() if not line.startswith("#"))
    return {name: int(count) for name, count in rows}


def update():
    lines = [f"{name} {count}\n" for name, count in costs_now().items()]
    COUNTS.write_text("# The stripped shared library's bytes, and the instructions of the fixed operations, with the compiler and\n"
                      "# the C library of Debian 12 on x86-64.\n"
                      "# Written by scripts/bench --update.\n" + "".join(lines))


def costs():
    """Fails if the library or an operation has grown by more than MOST_GROWTH since the figures were stored, or if the
    library is not optimised as a whole."""
    table = Table()
    add_optimisation(table)
    print(table.text())
    compare(kept_counts(), costs_now())
    table.require_budgets()


PARTS = (records, store, transport, events, banner, processes, draw, sizes, counts)


def measure(arguments):
    quick, names = "--quick" in arguments, [each for each in arguments if each != "--quick"]
    table, env = Table(), environment()
    for part in PARTS:
        if not names or part.__name__ in names:
            print(f"Measuring {part.__name__}, load {os.getloadavg()[0]:.1f} ...", file=sys.stderr)
            part(table, quick, env)
            Path("build/bench.json").write_text(
                json.dumps({"load": os.getloadavg(), "rows": table.rows}, indent=1) + "\n")
    print(table.text())
    table.require_budgets()


def main(mode, *arguments):
    if mode == "check":
        compare(*map(counted, arguments))
    elif mode == "measure":
        measure(arguments)
    else:
        {"costs": costs, "update": update}[mode]()


if __name__ == "__main__":
    main(*sys.argv[1:])
