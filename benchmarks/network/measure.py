"""Measures how many round trips a person waits for the banner, and prints them as one table.

A relay delays everything between the sample host and the local service. A figure is the time from showBanner to the
banner's first frame, less the same time without delay, in round trips. It compares the shortest run of each kind, since
other load on the machine only makes runs longer; the file with the results has all runs.

  measure.py [--quick]     everything, beside a browser with an open-source banner; writes build/bench-network.json
  measure.py --check       only what has a goal, with 100 ms a round trip. Fails if a goal is missed
"""

import argparse
import contextlib
import json
import os
import random
import socket
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from browser import Browser
from servers import BUILD, HTTP2, PLAIN, TRANSPORTS, Relay, Servers, started

GOALS_AT = 100  # milliseconds a round trip
MAX_ERROR = 0.1  # round trips by which the relay may be wrong

AT_ONCE, FIRST, CHECKED, FRESH, STOPPED = BANNERS = (
    "first banner, right after createInstance", "first banner, after creation's request was answered",
    "second banner, documents to be checked", "second banner, documents still fresh", "the same, service stopped")
GOALS = {
    (AT_ONCE, PLAIN): 2.1, (AT_ONCE, HTTP2): 3.1, (FIRST, PLAIN): 2.1, (FIRST, HTTP2): 1.1,
    (CHECKED, PLAIN): 1.1, (CHECKED, HTTP2): 1.1,
    **{(banner, transport): 0.1 for banner in (FRESH, STOPPED) for transport in TRANSPORTS},
}


class Host:
    """The sample host, which uses a new store."""

    def __init__(self, stack, servers, transport, port, site):
        scheme = "http" if transport == PLAIN else "https"
        folder = Path(stack.enter_context(tempfile.TemporaryDirectory()))
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software",
                       "XDG_RUNTIME_DIR": str(folder)}
        authority = [] if transport == PLAIN else ["--ca", servers.authority]
        self.process = stack.enter_context(started(
            BUILD / "apps/host/talvo-host", "--api-url", f"{scheme}://127.0.0.1:{port}", "--site", site,
            "--store", folder / "store", "--reduced-motion", "--empty", "--script", "-", *authority,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment))

    def do(self, *commands):
        """Runs commands, and returns the answer to the last one. If that command failed, the answer is an error."""
        self.process.stdin.write("".join(each + "\n" for each in commands))
        self.process.stdin.flush()
        for command in commands:
            name = {"settle": "settled"}.get(command.split()[0], command.split()[0])
            for line in self.process.stdout:
                answer = json.loads(line)
                if "callback" not in answer and (name in answer or "error" in answer):
                    break
            else:
                raise SystemExit(f"The sample host ended at {command}")
        return answer

    def banner(self, *before):
        """Shows a banner, and returns the milliseconds to its first frame. None if there is no banner."""
        if self.do(*before, "banner").get("banner") != "shown":
            return None
        return self.do("timing")["timing"]["show_to_first_frame_ms"]


# Visits. Each shows banners, and yields their names and the milliseconds until they were shown.
CLOSE = ("key Escape", "settle")


def at_once(site, relay):
    yield AT_ONCE, site("checked").banner()


def checked(site, relay):
    host = site("checked")
    yield FIRST, host.banner("settle")
    yield CHECKED, host.banner(*CLOSE)


def kept(site, relay):
    host = site("kept")
    host.do("settle", "banner")
    yield FRESH, host.banner(*CLOSE)
    host.do(*CLOSE)
    relay.stop()
    yield STOPPED, host.banner()


def browser_checked(site, relay):
    page = site("checked")
    yield AT_ONCE, page.banner()
    page.leave()
    yield CHECKED, page.banner()


def browser_kept(site, relay):
    page = site("kept")
    page.banner()
    page.leave()
    yield FRESH, page.banner()
    page.leave()
    relay.stop()
    yield STOPPED, page.banner()


class WebPage:
    def __init__(self, stack, browser, transport, port, site):
        self.page = browser.page()
        stack.callback(self.page.close)
        self.folder = f"{'http' if transport == PLAIN else 'https'}://127.0.0.1:{port}/sites/{site}"

    def banner(self):
        return self.page.banner(f"{self.folder}/page.html")

    def leave(self):
        """Opens another page of the same origin: for another origin the browser would start a process."""
        if not self.page.open(f"{self.folder}/blank.html"):
            raise SystemExit("The browser cannot open a page")


class Times:
    """The milliseconds of every run, by banner, transport and round trip."""

    def __init__(self):
        self.runs = {}

    def measure(self, visit, site, servers, transport, round_trip):
        with contextlib.ExitStack() as stack:
            relay = Relay(stack, servers.ports[transport], round_trip)
            for banner, time in visit(lambda name: site(stack, transport, relay.port, name), relay):
                self.runs.setdefault((banner, transport, round_trip), []).append(time)

    def round_trips(self, banner, transport, round_trip):
        """The wait in round trips. None if there was no banner."""
        times = [self.runs[banner, transport, each] for each in (0, round_trip)]
        if any(time is None for runs in times for time in runs):
            return None
        return (min(times[1]) - min(times[0])) / round_trip

    def milliseconds(self, banner, transport, round_trip):
        """The shortest time, in text; empty if it was not measured."""
        times = self.runs.get((banner, transport, round_trip), [None])
        return "" if None in times else f"{min(times):.0f} ms"


def check_relay(stack, round_trips):
    """Fails if an exchange of a byte does not take one round trip, or two on a new connection."""
    server = stack.enter_context(socket.create_server(("127.0.0.1", 0)))

    def answer():
        with contextlib.suppress(OSError):  # the server is closed at the end
            while True:
                connection, _ = server.accept()
                while byte := connection.recv(1):
                    connection.send(byte)

    threading.Thread(target=answer, daemon=True).start()
    times = {}
    for _ in range(10):
        for round_trip in (0, *round_trips):
            with contextlib.ExitStack() as own:
                relay = Relay(own, server.getsockname()[1], round_trip)
                begin = time.monotonic()
                client = own.enter_context(socket.create_connection(("127.0.0.1", relay.port)))
                for exchange in (2, 3):
                    client.send(b"x")
                    client.recv(1)
                    times.setdefault((exchange, round_trip), []).append((time.monotonic() - begin) * 1e3)
    for (exchange, round_trip), runs in times.items():
        if round_trip:
            seen = (min(runs) - min(times[exchange, 0])) / round_trip  # other load can only make it longer
            print(f"{exchange - 1} exchanges on a new connection, {round_trip} ms: {seen:.2f} round trips", file=sys.stderr)
            if abs(seen - exchange) > MAX_ERROR:
                raise SystemExit(f"The relay is wrong: {exchange} round trips were expected. Is the machine busy?")


def measure(rounds, transports, round_trips, has_browser):
    ours, theirs = Times(), Times()
    with contextlib.ExitStack() as stack:
        folder = Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="talvo-network-")))
        servers = Servers(folder, stack, has_browser)
        check_relay(stack, round_trips)
        visits = [(ours, visit, lambda stack, *each: Host(stack, servers, *each)) for visit in (at_once, checked, kept)]
        if has_browser:
            browser = Browser(folder / "profile", servers.key_hash)
            stack.callback(browser.close)
            visits += [(theirs, visit, lambda stack, *each: WebPage(stack, browser, *each))
                       for visit in (browser_checked, browser_kept)]
        for number in range(rounds):
            for transport in transports:
                print(f"Round {number + 1} of {rounds}, {transport}, load {os.getloadavg()[0]:.1f} ...", file=sys.stderr)
                for times, visit, site in visits:
                    for round_trip in random.sample((0, *round_trips), len(round_trips) + 1):
                        times.measure(visit, site, servers, transport, round_trip)
        servers.require_http2()
    return ours, theirs


def figure(round_trips):
    return "no banner" if round_trips is None else f"{round(round_trips, 2) + 0.0:.2f}"  # 0.00, not -0.00


def report(ours, theirs, transports, round_trips):
    """Prints the table, and returns whether all goals are met."""
    names = ["banner", "connection", *(f"{each} ms" for each in round_trips), f"goal at {GOALS_AT} ms", "met"]
    if theirs.runs:
        names += [f"browser, {each} ms" for each in round_trips] + [f"time at {GOALS_AT} ms", "browser's time"]
    rows, is_met = [], True
    for banner in BANNERS:
        for transport in transports:
            goal = GOALS.get((banner, transport))
            seen = ours.round_trips(banner, transport, GOALS_AT)
            met = goal is None or seen is not None and seen <= goal
            is_met = is_met and met
            cells = [figure(ours.round_trips(banner, transport, each)) for each in round_trips]
            cells += ["", ""] if goal is None else [f"<= {goal:g}", "yes" if met else "NO"]
            if theirs.runs:
                cells += [figure(theirs.round_trips(banner, transport, each)) if banner != FIRST else "" for each in round_trips]
                cells += [times.milliseconds(banner, transport, GOALS_AT) for times in (ours, theirs)]
            rows.append([banner, transport, *cells])
    widths = [max(len(row[i]) for row in (names, *rows)) for i in range(len(names))]
    line = lambda cells: "| " + " | ".join(cell.ljust(width) for cell, width in zip(cells, widths)) + " |"
    print("\n".join([line(names), "|" + "|".join("-" * (width + 2) for width in widths) + "|", *map(line, rows)]))
    return is_met


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    rounds = 3 if options.quick else 8 if options.check else 5
    transports, round_trips = (TRANSPORTS, (25, 100, 300)) if not options.check else ((PLAIN, HTTP2), (GOALS_AT,))
    ours, theirs = measure(rounds, transports, round_trips, has_browser=not options.check)
    is_met = report(ours, theirs, transports, round_trips)
    if not options.check:
        runs = [{"who": who, "banner": banner, "connection": transport, "round_trip_ms": round_trip, "ms": times}
                for who, of in (("ours", ours), ("browser", theirs)) for (banner, transport, round_trip), times in of.runs.items()]
        Path("build/bench-network.json").write_text(json.dumps(runs, indent=1) + "\n")
    elif not is_met:
        raise SystemExit("Some goals are missed.")


if __name__ == "__main__":
    main()
