#!/usr/bin/env python3
"""What bench/peers.sh runs: MPD and the command on the same files in turn.

Each figure is the median of the rounds, with a warm page cache, and takes whole processes: a scan from the start of
the program to the last file known, a start to a collection that is loaded. An MPD that has been told to look for
changes says itself when it is done.
"""
import argparse
import contextlib
import os
import re
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import time

LONGEST_WAIT = 1800  # seconds, for a scan of a slow disk
# Reading MPD's own answer, not the clock, ends a wait; this is how often the log of a start is looked at.
PAUSE = 0.005


def fail(message):
    sys.exit(f"peers.py: {message}")


class Mpd:
    """One MPD with a folder of its own, which ends with the scope."""

    def __init__(self, folder, music):
        self.folder = os.path.abspath(folder)
        self.socket_path = os.path.join(self.folder, "socket")
        self.process = None
        os.makedirs(os.path.join(self.folder, "playlists"), exist_ok=True)
        self.config = os.path.join(self.folder, "mpd.conf")
        with open(self.config, "w", encoding="utf-8") as file:
            file.write(f'music_directory "{music}"\n'
                       f'playlist_directory "{self.folder}/playlists"\n'
                       f'db_file "{self.folder}/database"\n'
                       f'state_file "{self.folder}/state"\n'
                       f'log_file "{self.folder}/log"\n'
                       f'bind_to_address "{self.socket_path}"\n'
                       'zeroconf_enabled "no"\nauto_update "no"\nfollow_outside_symlinks "no"\n'
                       'audio_output {\n    type "null"\n    name "none"\n}\n')

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()

    def start(self):
        """Returns when it answers, with the songs that it knows and the seconds since it was called."""
        with contextlib.suppress(FileNotFoundError):
            os.remove(self.socket_path)
        begin = time.perf_counter()
        self.process = subprocess.Popen(["mpd", "--no-daemon", self.config], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        songs = int(self.answer("stats")["songs"])
        return songs, time.perf_counter() - begin

    def stop(self):
        if not self.process:
            return
        self.process.send_signal(signal.SIGTERM)
        try:
            self.process.wait(60)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process = None

    def connect(self):
        end = time.monotonic() + 60
        while True:
            if self.process.poll() is not None:
                fail(f"MPD ended at its start; {self.folder}/log has the cause")
            link = socket.socket(socket.AF_UNIX)
            try:
                link.connect(self.socket_path)
                link.settimeout(LONGEST_WAIT)
                return link
            except (FileNotFoundError, ConnectionRefusedError):
                link.close()
                if time.monotonic() > end:
                    fail("MPD does not answer")
                time.sleep(PAUSE)

    def answer(self, *commands):
        """What it says to the last of these commands, which go over one connection."""
        with self.connect() as link, link.makefile("rw", encoding="utf-8") as stream:
            if not stream.readline().startswith("OK MPD"):
                fail("what answers is no MPD")
            for command in commands:
                stream.write(command + "\n")
                stream.flush()
                values = {}
                for line in stream:
                    if line.startswith("ACK"):
                        fail(f"MPD refuses \"{command}\": {line.strip()}")
                    if line == "OK\n":
                        break
                    name, _, value = line.rstrip("\n").partition(": ")
                    values[name] = value
        return values

    def update(self):
        """Takes in what changed, to its end: seconds."""
        begin = time.perf_counter()
        self.answer("update", "idle update")
        while "updating_db" in self.answer("status"):
            time.sleep(PAUSE)
        return time.perf_counter() - begin

    def resident(self):
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as status:
            return int(re.search(r"VmRSS:\s*(\d+) kB", status.read()).group(1)) * 1024


class Peers:
    def __init__(self, options):
        self.options = options
        self.qo = os.path.join(os.path.abspath(options.build), "host", "qo")
        self.folder = os.path.join(os.path.abspath(options.work), "peers")
        self.music = os.path.abspath(
            options.music or os.path.join(options.work, f"library-{options.files}-{options.seed}"))
        self.figures = {}

    def note(self, name, value):
        self.figures.setdefault(name, []).append(value)
        print(f"  {name}: {value:.3f}", file=sys.stderr)

    def run(self, *command):
        begin = time.perf_counter()
        done = subprocess.run(command, capture_output=True, text=True, stdin=subprocess.DEVNULL)
        if done.returncode != 0:
            fail(f"{' '.join(command)} ended with {done.returncode}:\n{done.stderr[-2000:]}")
        return done.stdout, time.perf_counter() - begin

    def make_library(self):
        if not os.path.isdir(self.music):
            make = os.path.join(os.path.abspath(self.options.build), "tools", "library", "make_library")
            self.run(make, self.music, "--files", str(self.options.files), "--seed", str(self.options.seed))

    def ours(self, number):
        data = os.path.join(self.folder, f"data-{number}")
        self.note("our first scan", self.run(self.qo, "--data", data, "scan", self.music)[1])
        self.note("our rescan", self.run(self.qo, "--data", data, "scan")[1])
        output, seconds = self.run(self.qo, "--data", data, "load", "--memory")
        self.note("our start", seconds)
        self.note("our memory", int(re.search(r"(\d+) KiB resident", output).group(1)) * 1024)

    def theirs(self, number):
        with Mpd(os.path.join(self.folder, f"mpd-{number}"), self.music) as mpd:
            self.note("their first scan", mpd.update())
            self.note("their rescan", mpd.update())
            mpd.stop()
            songs, seconds = mpd.start()
            if songs == 0:
                fail("MPD has found no songs")
            self.note("their start", seconds)
            self.note("their memory", mpd.resident())
        return songs

    def main(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        os.makedirs(self.folder)
        self.make_library()
        print("warming the page cache", file=sys.stderr)
        self.run("sh", "-c", 'find "$0" -type f -exec cat {} + >/dev/null', self.music)
        for number in range(self.options.runs):
            print(f"round {number + 1} of {self.options.runs}", file=sys.stderr)
            songs = self.theirs(number)
            self.ours(number)
        self.print_table(songs)

    def print_table(self, songs):
        version = self.run("mpd", "--version")[0].split("\n")[0]
        print(f"{songs} songs, {version}, median of {self.options.runs} rounds\n")
        print("| operation | ours | MPD | ratio | must reach | aim for | reached |\n|---|---|---|---|---|---|---|")
        rows = (("first scan", "{:.2f} s", 1, 0.1, 0.07),
                ("rescan", "{:.2f} s", 1, None, None),
                ("start", "{:.2f} s", 1, 0.9, 0.6),
                ("memory", "{:.0f} MiB", 1 << 20, None, None))
        titles = {"rescan": "rescan without change", "start": "start to a loaded collection",
                  "memory": "resident after it"}
        missed = False
        for name, form, unit, must, aim in rows:
            ours, theirs = (statistics.median(self.figures[f"{whose} {name}"]) / unit for whose in ("our", "their"))
            ratio = ours / theirs
            verdict = "" if must is None else "aim" if ratio <= aim else "yes" if ratio <= must else "NO"
            missed = missed or verdict == "NO"
            goals = " | " if must is None else f"{must:g} x | {aim:g} x"
            print(f"| {titles.get(name, name)} | {form.format(ours)} | {form.format(theirs)} | {ratio:.2f} x | {goals} | "
                  f"{verdict} |")
        sys.exit(1 if missed else 0)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True)
    parser.add_argument("--work", required=True)
    parser.add_argument("--files", type=int, default=100000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--music", help="files to use instead of a library that is made")
    # So that a scope's end stops MPD, too, when somebody ends this.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    Peers(parser.parse_args()).main()


if __name__ == "__main__":
    main()
