#!/usr/bin/env python3
"""Whole-binary benchmark of a collection run.

1. N generated modules, each sleeping T seconds and printing a small inventory,
   for each N given: the collector's wall time against the floor
   ceil(N / 8) * T and against `xargs -P8` running the same scripts the same
   way ("./mod.sh 2>/dev/null " through the shell, in the module's directory),
   alternating runs of the two; CPU per module. Then the time per module
   between the smallest and the largest N (the slope), against the floor's T / 8.
2. One module printing D devices, for each D given: the collector's parse,
   de-duplication and write time against `xmllint --noout` on the same bytes,
   and its peak memory against the size of the module output; then the time
   and memory per device between successive sizes (slopes).
3. With --gib, one module printing a gigabyte of devices: peak memory and time
   (xmllint is not run there: its document tree would need over 10 GB).

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


def timed_run(argv, cwd, stdin_text=None, check=True):
    """Returns (wall seconds, peak RSS in KiB, CPU seconds of the process tree,
    CPU seconds of the process itself without its children)."""
    start = time.monotonic()
    proc = subprocess.Popen(argv, cwd=cwd, stdin=subprocess.PIPE if stdin_text is not None else None,
                            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    if stdin_text is not None:
        proc.stdin.write(stdin_text.encode())
        proc.stdin.close()
    stderr = proc.stderr.read()
    # Exited but not yet reaped: its own CPU times are still readable.
    os.waitid(os.P_PID, proc.pid, os.WEXITED | os.WNOWAIT)
    with open("/proc/%d/stat" % proc.pid) as f:
        fields = f.read().rsplit(")", 1)[1].split()
    ticks = os.sysconf("SC_CLK_TCK")
    own = (int(fields[11]) + int(fields[12])) / ticks
    _, status, usage = os.wait4(proc.pid, 0)
    proc.returncode = os.waitstatus_to_exitcode(status)
    wall = time.monotonic() - start
    tree = usage.ru_utime + usage.ru_stime
    if check and proc.returncode not in (0, 1):
        sys.exit("run failed with status %d: %s" % (proc.returncode, stderr.decode()))
    return wall, usage.ru_maxrss, tree, own


def bench_parallel(binary, count, seconds, repeats):
    """Returns the collector's median wall time."""
    root = tempfile.mkdtemp(prefix="sorvik-bench-")
    try:
        modules, dirs = [], []
        for i in range(count):
            name = "m%03d" % i
            os.mkdir(os.path.join(root, name))
            write_script(os.path.join(root, name, "mod.sh"),
                         "sleep %s\n" % seconds +
                         "echo '<SVMInventory><Device componentID=\"%d\" display=\"d%d\">"
                         "<Application componentType=\"FRMW\" version=\"1.0\" display=\"fw\"/>"
                         "</Device></SVMInventory>'\n" % (i, i))
            modules.append(module_entry(i, name, "mod.sh"))
            dirs.append(os.path.join(root, name))
        write_config(root, modules)
        xargs = ["xargs", "-P%d" % THREADS, "-I{}", "sh", "-c", 'cd "$1" && ./mod.sh 2>/dev/null ', "sh", "{}"]
        collector_runs, xargs_runs = [], []
        for _ in range(repeats):  # alternating, so both see the same machine
            collector_runs.append(timed_run([binary, "-outc=out.xml", "-enc=UTF-8"], root))
            xargs_runs.append(timed_run(xargs, root, stdin_text="\n".join(dirs) + "\n", check=False))
        wall = statistics.median(r[0] for r in collector_runs)
        cpu = statistics.median(r[2] for r in collector_runs)
        xwall = statistics.median(r[0] for r in xargs_runs)
        xcpu = statistics.median(r[2] for r in xargs_runs)
        floor = math.ceil(count / THREADS) * seconds
        print("parallel: %d modules x %.2f s, median of %d: collector %.3f s, xargs -P%d %.3f s, floor %.3f s; "
              "collector/floor %.4f, xargs/floor %.4f, collector/xargs %.4f"
              % (count, seconds, repeats, wall, THREADS, xwall, floor, wall / floor, xwall / floor, wall / xwall))
        own = statistics.median(r[3] for r in collector_runs)
        print("parallel: %d modules: CPU of the whole process tree %.2f ms per module (xargs tree %.2f ms); "
              "the collector's own %.3f ms per module (counted in clock ticks: %.3f ms per module)"
              % (count, 1000.0 * cpu / count, 1000.0 * xcpu / count, 1000.0 * own / count,
                 1000.0 / os.sysconf("SC_CLK_TCK") / count))
        return wall
    finally:
        shutil.rmtree(root)


def write_inventory(path, devices):
    with open(path, "w") as f:
        f.write('<?xml version="1.0"?>\n<SVMInventory lang="en">\n')
        repeat_from = devices - devices // 10
        for i in range(devices):
            n = i % repeat_from  # one device in ten repeats an earlier one
            f.write('<Device vendorID="8086" deviceID="%04x" subVendorID="1028" subDeviceID="%04x" '
                    'bus="%x" device="%x" function="%x" display="Controller number %d" '
                    'componentID="%d"><Application componentType="FRMW" version="1.%d.%d" '
                    'display="Controller firmware %d"/></Device>\n'
                    % (n & 0xffff, (n >> 16) & 0xffff, (n >> 8) & 0xff, (n >> 3) & 0x1f, n & 7,
                       n, n, n, n % 97, n))
        f.write("</SVMInventory>\n")
    return os.path.getsize(path)


def bench_large(binary, devices, repeats, lint=True):
    """Returns (devices, output bytes, collector wall, xmllint wall or None, peak RSS bytes)."""
    root = tempfile.mkdtemp(prefix="sorvik-bench-")
    try:
        os.mkdir(os.path.join(root, "big"))
        data = os.path.join(root, "big", "inventory.xml")
        size = write_inventory(data, devices)
        write_script(os.path.join(root, "big", "big.sh"), "cat inventory.xml\n")
        write_config(root, [module_entry(0, "big", "big.sh")])
        lint_runs, runs = [], []
        for _ in range(repeats):
            if lint:
                lint_runs.append(timed_run(["xmllint", "--noout", data], root)[0])
            runs.append(timed_run([binary, "-outc=out.xml", "-enc=UTF-8"], root))
        wall = statistics.median(r[0] for r in runs)
        peak = max(r[1] for r in runs) * 1024
        lint_wall = statistics.median(lint_runs) if lint else None
        text = ("large: %d devices, %.1f MB of module output: collector %.3f s" % (devices, size / 1e6, wall))
        if lint:
            text += ", xmllint --noout %.3f s (collector/xmllint %.2f)" % (lint_wall, wall / lint_wall)
        text += ", peak RSS %.1f MB (%.2f x the output)" % (peak / 1e6, peak / size)
        print(text)
        return devices, size, wall, lint_wall, peak
    finally:
        shutil.rmtree(root)


def print_device_slopes(results):
    for (n1, s1, t1, _, m1), (n2, s2, t2, _, m2) in zip(results, results[1:]):
        print("slope: %d -> %d devices: %.2f us and %.0f bytes of peak memory per added device "
              "(output %.0f bytes per device)"
              % (n1, n2, 1e6 * (t2 - t1) / (n2 - n1), (m2 - m1) / (n2 - n1), (s2 - s1) / (n2 - n1)))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--binary", required=True)
    parser.add_argument("--modules", default="64", help="comma-separated module counts")
    parser.add_argument("--seconds", type=float, default=0.5)
    parser.add_argument("--devices", default="100000", help="comma-separated device counts")
    parser.add_argument("--repeats", type=int, default=3)
    parser.add_argument("--gib", action="store_true", help="also one module printing about 1 GiB")
    args = parser.parse_args()
    binary = os.path.abspath(args.binary)

    counts = [int(n) for n in args.modules.split(",")]
    walls = [bench_parallel(binary, n, args.seconds, args.repeats if n <= 64 else 1) for n in counts]
    if len(counts) > 1:
        slope = (walls[-1] - walls[0]) / (counts[-1] - counts[0])
        print("slope: %d -> %d modules: %.2f ms per added module (floor %.2f ms)"
              % (counts[0], counts[-1], 1000.0 * slope, 1000.0 * args.seconds / THREADS))

    results = [bench_large(binary, n, args.repeats if n <= 100000 else 1) for n in
               [int(d) for d in args.devices.split(",")]]
    if len(results) > 1:
        print_device_slopes(results)
    if args.gib:
        # 4,000,000 devices of this shape come to just over 2^30 bytes.
        bench_large(binary, 4000000, 1, lint=False)


if __name__ == "__main__":
    main()
