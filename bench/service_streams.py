#!/usr/bin/python3
"""2,000 answers at once through dorix-service, and beside it through nginx, which passes the same model's streams on:
how much later each event arrives, and the memory of each.

    service_streams.py [--streams N] [--events N] [--interval MS] BUILD_FOLDER
"""

import argparse
import json
import subprocess
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests/e2e/service"))

from harness import Service, wait_until  # noqa: E402

MODEL_PORT, NGINX_PORT = 18901, 18902
NGINX = """
worker_processes 1; daemon off; pid {folder}/pid; error_log {folder}/error.log; worker_rlimit_nofile 65536;
events {{ worker_connections 10000; }}
http {{ access_log off; client_body_temp_path {folder}/a; proxy_temp_path {folder}/b; fastcgi_temp_path {folder}/c;
uwsgi_temp_path {folder}/d; scgi_temp_path {folder}/e;
server {{ listen 127.0.0.1:{port} backlog=4096; location / {{ proxy_pass http://127.0.0.1:{model};
proxy_http_version 1.1; proxy_buffering off; }} }} }}
"""


def peak_memory(pid: int) -> int:
    """In KiB."""
    status = Path(f"/proc/{pid}/status").read_text()
    return int(next(line for line in status.splitlines() if line.startswith("VmHWM")).split()[1])


def worker_of(nginx: subprocess.Popen) -> int:
    children = Path(f"/proc/{nginx.pid}/task/{nginx.pid}/children")
    return int(wait_until(lambda: children.read_text().split(), "the worker")[0])


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=Path)
    parser.add_argument("--streams", type=int, default=2000)
    parser.add_argument("--events", type=int, default=20)
    parser.add_argument("--interval", type=int, default=1000)
    options = parser.parse_args()
    load = options.build / "bench/service_load"
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "nginx.conf").write_text(NGINX.format(folder=folder, port=NGINX_PORT, model=MODEL_PORT))
        model = subprocess.Popen([load, "model", str(MODEL_PORT), str(options.events), str(options.interval)],
                                 stdout=subprocess.PIPE)
        nginx = subprocess.Popen(["nginx", "-c", f"{folder}/nginx.conf", "-e", f"{folder}/error.log"])
        service = Service(str(options.build / "src/service/dorix-service"), CONNECTIONS="10000", MODEL="x",
                          MODEL_URL=f"http://127.0.0.1:{MODEL_PORT}/v1")
        try:
            model.stdout.readline()
            token = service.sign_in()
            for name, port, path, pid in (("the model itself", MODEL_PORT, "/", 0),
                                          ("nginx", NGINX_PORT, "/v1/chat/completions", worker_of(nginx)),
                                          ("dorix-service", service.port, "/v1/ai/ask", service.process.pid)):
                before = peak_memory(pid) if pid else 0
                done = subprocess.run([load, "callers", str(port), path, token, str(options.streams)],
                                      stdout=subprocess.PIPE, text=True)
                found = json.loads(done.stdout)
                memory = (peak_memory(pid) - before) / options.streams if pid else 0
                print(f"{name}: {found} KiB a stream: {memory:.1f}", flush=True)
        finally:
            service.stop()
            for process in (nginx, model):
                process.terminate()
                process.wait()
    return 0


sys.exit(main())
