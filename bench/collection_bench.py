#!/usr/bin/env python3
"""Whole-binary benchmark of a collection run.

1. N generated modules, each sleeping T seconds and printing a small inventory:
   wall time against the ideal ceil(N / 8) * T, and CPU per module.
2. One module printing many devices: the collector's parse, de-duplication and
   write time against `xmllint --noout` on the same bytes, and peak memory.

Run as root (a collection takes /var/lock/sorvik.tmp); nothing else may be
collecting at the same time.
"""
import argparse
import json
import math
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

THREADS = 8


def write_config(root, modules):
    nodes = [{"_type": "Generic", "InvComponent": modules}]
    with open(os.path.join(root, "icconfig_new.json"), "w") as f:
        json.dump({"SorVikConfig": {"Generation": nodes}}, f, indent=1)


def module_entry(index, name, command):
    return {"_dir": "/" + name, "_type": "cli", "__text": command,
            "#GUID": "00000000-0000-0000-0000-%012x" % index, "_CmpType": "FRMW",
            "_isParallelRunSupported": "true"}


def write_script(path, body):
    with open(path, "w") as f:
        f.write("#!/bin/sh\n" + body)
    os.chmod(path, 0o755)


def timed_run(argv, cwd):
    """Returns (wall seconds, peak RSS in KiB, CPU seconds of the process tree)."""
    before = os.times()
    start = time.monotonic()
    proc = subprocess.run(["/usr/bin/time", "-f", "%M"] + argv, cwd=cwd,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    wall = time.monotonic() - start
    after = os.times()
    cpu = (after.children_user - before.children_user) + (after.children_system - before.children_system)
    peak = int(proc.stderr.decode().strip().splitlines()[-1])
    if proc.returncode not in (0, 1):
        sys.exit("run failed with status %d: %s" % (proc.returncode, proc.stderr.decode()))
    return wall, peak, cpu


def bench_parallel(binary, count, seconds, repeats):
    root = tempfile.mkdtemp(prefix="sorvik-bench-")
    try:
        modules = []
        for i in range(count):
            name = "m%03d" % i
            os.mkdir(os.path.join(root, name))
            write_script(os.path.join(root, name, "mod.sh"),
                         "sleep %s\n" % seconds +
                         "echo '<SVMInventory><Device componentID=\"%d\" display=\"d%d\">"
                         "<Application componentType=\"FRMW\" version=\"1.0\" display=\"fw\"/>"
                         "</Device></SVMInventory>'\n" % (i, i))
            modules.append(module_entry(i, name, "mod.sh"))
        write_config(root, modules)
        runs = [timed_run([binary, "-outc=out.xml", "-enc=UTF-8"], root) for _ in range(repeats)]
        wall = statistics.median(r[0] for r in runs)
        cpu = statistics.median(r[2] for r in runs)
        ideal = math.ceil(count / THREADS) * seconds
        print("parallel: %d modules x %.2f s: wall %.3f s, ideal %.3f s (+%.1f%%), "
              "CPU of the whole process tree %.2f ms per module"
              % (count, seconds, wall, ideal, 100.0 * (wall - ideal) / ideal, 1000.0 * cpu / count))
    finally:
        shutil.rmtree(root)


def bench_large(binary, devices, repeats):
    root = tempfile.mkdtemp(prefix="sorvik-bench-")
    try:
        os.mkdir(os.path.join(root, "big"))
        data = os.path.join(root, "big", "inventory.xml")
        with open(data, "w") as f:
            f.write('<?xml version="1.0"?>\n<SVMInventory lang="en">\n')
            for i in range(devices):
                n = i % (devices - devices // 10)  # one device in ten repeats an earlier one
                f.write('<Device vendorID="8086" deviceID="%04x" subVendorID="1028" subDeviceID="%04x" '
                        'bus="%x" device="%x" function="%x" display="Controller number %d" '
                        'componentID="%d"><Application componentType="FRMW" version="1.%d.%d" '
                        'display="Controller firmware %d"/></Device>\n'
                        % (n & 0xffff, (n >> 16) & 0xffff, (n >> 8) & 0xff, (n >> 3) & 0x1f, n & 7,
                           n, n, n, n % 97, n))
            f.write("</SVMInventory>\n")
        size = os.path.getsize(data)
        write_script(os.path.join(root, "big", "big.sh"), "cat inventory.xml\n")
        write_config(root, [module_entry(0, "big", "big.sh")])
        lint = statistics.median(timed_run(["xmllint", "--noout", data], root)[0] for _ in range(repeats))
        runs = [timed_run([binary, "-outc=out.xml", "-enc=UTF-8"], root) for _ in range(repeats)]
        wall = statistics.median(r[0] for r in runs)
        peak = max(r[1] for r in runs)
        print("large: %d devices, %.1f MB of module output: collector %.3f s, xmllint --noout %.3f s "
              "(ratio %.2f), peak RSS %.1f MB (%.1f x the output)"
              % (devices, size / 1e6, wall, lint, wall / lint, peak / 1024.0, peak * 1024.0 / size))
    finally:
        shutil.rmtree(root)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--binary", required=True)
    parser.add_argument("--modules", type=int, default=64)
    parser.add_argument("--seconds", type=float, default=0.5)
    parser.add_argument("--devices", type=int, default=100000)
    parser.add_argument("--repeats", type=int, default=3)
    args = parser.parse_args()
    binary = os.path.abspath(args.binary)
    bench_parallel(binary, args.modules, args.seconds, args.repeats)
    bench_large(binary, args.devices, args.repeats)


if __name__ == "__main__":
    main()
