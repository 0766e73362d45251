"""What lies elsewhere: a WebDAV server and a friend on loopback, beside the waits that the kernel prescribes, a load, and
rclone."""
import os
import re
import shutil
import socket
import subprocess
import threading
import time

WAIT = 0.042  # seconds; the kernel waits as long before it asks for the result of a request
USER = ("ann", "s3cret")
GIGABYTE = 1 << 30


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(port):
    for _ in range(500):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return
        time.sleep(0.02)
    raise RuntimeError(f"nothing listens at port {port}")


class Counter:
    """Passes connections on to a port, and counts requests and the bytes of answers."""

    METHODS = re.compile(rb"(?:^|\r\n\r\n)(PROPFIND|GET|HEAD|OPTIONS) ")

    def __init__(self, target):
        self.target = target
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.reset()
        threading.Thread(target=self.accept, daemon=True).start()

    def reset(self):
        self.requests = 0
        self.fetched = 0

    def accept(self):
        while True:
            near = self.listener.accept()[0]
            far = socket.create_connection(("127.0.0.1", self.target))
            threading.Thread(target=self.ask, args=(near, far), daemon=True).start()
            threading.Thread(target=self.answer, args=(far, near), daemon=True).start()

    def ask(self, near, far):
        while block := near.recv(65536):
            self.requests += len(self.METHODS.findall(block))
            far.sendall(block)
        far.close()

    def answer(self, far, near):
        try:
            while block := far.recv(65536):
                self.fetched += len(block)
                near.sendall(block)
        except OSError:
            pass  # the client has what it wants


class Far:
    def __init__(self, bench):
        self.bench = bench
        self.folder = os.path.join(os.path.dirname(bench.fresh), "far")
        shutil.rmtree(self.folder, ignore_errors=True)
        os.makedirs(self.folder)
        self.qo = bench.tool("host", "qo")

    def path(self, name):
        return os.path.join(self.folder, name)

    def run(self, data, *words, typed=None):
        """Seconds, and the largest resident size in KiB."""
        start = time.perf_counter()
        with subprocess.Popen([self.qo, "--data", self.path(data), *words], stdin=subprocess.PIPE,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True) as process:
            process.stdin.write(typed or "")
            process.stdin.close()
            error = process.stderr.read()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            raise RuntimeError(f"qo {' '.join(words)}: {error[-500:]}")
        return time.perf_counter() - start, usage.ru_maxrss

    def webdav(self):
        served = self.path("served")
        self.bench.run([self.bench.tool("tools", "library", "make_library"), served, "--files", "1000", "--seed", "7"])
        # The server looks at its folder once, so what it is to give is there before it starts.
        with open(self.path("one.bin"), "wb") as file:
            for _ in range(GIGABYTE >> 20):
                file.write(os.urandom(1 << 20))
        for name in ("one.bin", "two.bin"):
            shutil.copyfile(self.path("one.bin"), os.path.join(served, name))
        port = free_port()
        with subprocess.Popen(["rclone", "serve", "webdav", served, "--addr", f"127.0.0.1:{port}", "--user", USER[0],
                               "--pass", USER[1]], stderr=subprocess.DEVNULL) as server:
            try:
                wait_for(port)
                self.scans(port, served)
                self.transfers(port)
            finally:
                server.terminate()

    def scans(self, port, served):
        bench = self.bench
        folders = sum(1 for _ in os.walk(served))
        counter = Counter(port)
        for number in range(bench.options.runs):
            data = f"data-{number}"
            login = ("plugin", "login", "NAS", "--webdav", f"http://127.0.0.1:{counter.port}/", "--user", USER[0])
            self.run(data, *login, typed=USER[1] + "\n")
            self.run(data, "plugin", "set", "NAS", "--music", "", "--movies", "")
            counter.reset()
            bench.note("WebDAV scan", self.run(data, "plugin", "scan", "NAS")[0])
            bench.note("waits of a WebDAV scan", counter.requests * WAIT)
            bench.times.setdefault("KiB for a file", []).append(counter.fetched / 1024 / 1000)
            counter.reset()
            bench.note("WebDAV rescan", self.run(data, "plugin", "scan", "NAS")[0])
            bench.times.setdefault("requests of a rescan for a folder", []).append(counter.requests / folders)

    def transfers(self, port):
        bench = self.bench
        data = "data-copies"
        local = self.path("one.bin")
        small = self.path("small.bin")
        with open(small, "wb") as file:
            file.write(b"x")
        obscured = bench.run(["rclone", "obscure", USER[1]]).strip()
        remote = f":webdav,url='http://127.0.0.1:{port}/',user={USER[0]},pass={obscured}:"
        login = ("plugin", "login", "NAS", "--webdav", f"http://127.0.0.1:{port}/", "--user", USER[0])
        self.run(data, *login, typed=USER[1] + "\n")
        os.makedirs(self.path("to"))

        def rclone(name, source, target):
            """Until what has come is on the disk, as it is when the command ends."""
            os.sync()  # nobody waits for what another one has written
            start = time.perf_counter()
            bench.run(["rclone", "copyto", "--ignore-times", source, target])
            if os.path.exists(target):
                with open(target, "rb") as file:
                    os.fsync(file)
            bench.note(name, time.perf_counter() - start)
            os.sync()

        least = self.run(data, "plugin", "put", small, "--to", "NAS/far", "--replace")[1]
        for _ in range(bench.options.runs):
            # Each writes a new file into memory that the last one has left: such as a virtual machine has not
            # touched yet is slow.
            shutil.rmtree(self.path("to"))
            os.makedirs(self.path("to"))
            rclone("rclone download of 1 GiB", remote + "two.bin", self.path("to/two.bin"))
            os.remove(self.path("to/two.bin"))
            seconds, most = self.run(data, "plugin", "get", "NAS", "one.bin", "--to", self.path("to"))
            bench.note("download of 1 GiB", seconds)
            rclone("rclone upload of 1 GiB", local, remote + "far/two.bin")
            seconds, other = self.run(data, "plugin", "put", local, "--to", "NAS/far", "--replace")
            bench.note("upload of 1 GiB", seconds)
            bench.times.setdefault("MiB more for 1 GiB", []).append((max(most, other) - least) / 1024)

    def friend(self):
        """The whole collection as a friend's list, from one process to another."""
        bench = self.bench
        port = free_port()
        place = f"127.0.0.1:{port}"
        qo = [self.qo, "--data", bench.data]
        subprocess.run(qo + ["share", "revoke", "Bench"], stderr=subprocess.DEVNULL, check=False)
        link = bench.run(qo + ["share", "invite", "Bench", "--as", "Ann", "--at", place]).strip()
        with subprocess.Popen(qo + ["share", "serve", "--listen", place], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as server:
            try:
                wait_for(port)
                for number in range(bench.options.runs):
                    data = f"data-friend-{number}"
                    self.run(data, "share", "accept", link)
                    bench.process("load beside a friend", bench.data, "load")
                    bench.note("friend's list", self.run(data, "share", "scan", "Ann")[0])
            finally:
                server.terminate()
        bench.run(qo + ["share", "revoke", "Bench"])
