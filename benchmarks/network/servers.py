"""The servers from which the sample host or a browser fetches documents."""

import base64
import contextlib
import hashlib
import json
import os
import shutil
import socket
import subprocess
import time
from pathlib import Path

BUILD = Path(os.environ.get("TALVO_BUILD", "build/release")).absolute()
SERVICE = BUILD / "apps/consent-service/talvo-consent-service"
PEER = Path("build/peers/node_modules/vanilla-cookieconsent/dist")
PLAIN, TLS, HTTP2 = TRANSPORTS = ("HTTP/1.1", "HTTP/1.1, TLS", "HTTP/2, TLS")


def run(*command, **options):
    return subprocess.run([str(each) for each in command], check=True, capture_output=True, **options).stdout


@contextlib.contextmanager
def started(*command, **options):
    process = subprocess.Popen([str(each) for each in command], text=True, **options)
    try:
        yield process
    finally:
        process.kill()
        process.communicate()


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


def wait_for_server(port):
    for _ in range(500):
        with contextlib.suppress(ConnectionRefusedError), socket.create_connection(("127.0.0.1", port)):
            return
        time.sleep(0.02)
    raise SystemExit(f"No server listens on port {port}")


class Servers:
    """The local service with the sites `checked` and `kept`, at one port for each transport."""

    def __init__(self, folder, stack, has_browser):
        self.authority = folder / "authority.pem"
        key, certificate, sites = folder / "server.key", folder / "server.pem", folder / "sites"
        make = ("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2")
        run(*make, "-subj", "/CN=benchmark", "-keyout", folder / "authority.key", "-out", self.authority)
        run(*make, "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-addext",
            "basicConstraints=critical,CA:FALSE", "-CA", self.authority, "-CAkey", folder / "authority.key",
            "-keyout", key, "-out", certificate)
        public_key = run("openssl", "pkey", "-in", key, "-pubout", "-outform", "der")
        self.key_hash = base64.b64encode(hashlib.sha256(public_key).digest()).decode()
        for name, settings in (("checked", {}), ("kept", {"keepFor": 3600})):
            shutil.copytree("apps/consent-service/sites/demo", sites / name)
            (sites / name / "site.json").write_text(json.dumps({"languages": ["en", "de", "ar"], **settings}))
            if has_browser:
                (sites / name / "blank.html").write_text("<!DOCTYPE html><title>Blank</title>")
                for file in (Path(__file__).with_name("page.html"), PEER / "cookieconsent.css", PEER / "cookieconsent.umd.js"):
                    shutil.copy(file, sites / name)

        def service(*options):
            process = stack.enter_context(started(SERVICE, "--port", "0", "--sites", sites, *options, stdout=subprocess.PIPE))
            return int(process.stdout.readline().rsplit(":", 1)[1])

        self.ports = {PLAIN: service(), TLS: service("--tls", certificate, key), HTTP2: free_port()}
        # nghttpx passes each request on as soon as it arrives, and each reply as soon as the service sends it.
        self.log = folder / "nghttpx.log"
        stack.enter_context(started(
            shutil.which("nghttpx", path=f"{os.environ['PATH']}:/usr/sbin"), "--conf=/dev/null", "--no-ocsp", "--workers=1",
            f"--frontend=127.0.0.1,{self.ports[HTTP2]}", f"--backend=127.0.0.1,{self.ports[PLAIN]}",
            f"--accesslog-file={self.log}", "--accesslog-format=$request", key, certificate, stderr=subprocess.DEVNULL))
        wait_for_server(self.ports[HTTP2])

    def require_http2(self):
        others = [line for line in self.log.read_text().splitlines() if not line.endswith("HTTP/2")]
        if others:
            raise SystemExit(f"These requests did not use HTTP/2: {others[:3]}")


class Relay:
    """Passes on connections to a port. A round trip through it takes `round_trip` milliseconds."""

    def __init__(self, stack, port, round_trip):
        self.process = stack.enter_context(started(BUILD / "benchmarks/delay_relay", port, round_trip,
                                                   stdout=subprocess.PIPE))
        self.port = int(self.process.stdout.readline().rsplit(" ", 1)[1])

    def stop(self):
        self.process.kill()
        self.process.wait()
