#!/usr/bin/env python3
"""Whole-binary benchmark of sorvik-audit on large inventories.

For each device count given, two inventories of one host as the collector
writes them (UTF-16 XML, its file default; UTF-8 XML; JSON), the second with a
tenth of the versions changed. Measured, best of --runs runs each:

- `sorvik-audit check` of the new inventory against a baseline with a rule per
  component type, against `xmllint --noout` on the same document;
- `sorvik-audit diff` of the two, against `xmllint --noout` on both;

wall time and the ratio to xmllint, and peak memory (the process's largest
resident size) against the size of the documents read. Targets: at most 1.5
times xmllint's time, peak memory at most 3 times the documents' size.
"""
import argparse
import os
import subprocess
import sys
import tempfile
import time

BASELINE = """{"schemaVersion": 1, "rules": [
  {"match": {"componentType": "BIOS"}, "min": "2.17.1"},
  {"match": {"componentType": "DRVR", "name": "i40e"}, "min": "2.20"},
  {"match": {"name": "NVMe*"}, "allowed": ["GDC5302Q", "GDC5602Q"]},
  {"match": {"componentType": "FRMW"}, "min": "16.35.1012"}]}
"""


def device_xml(i, changed):
    """One device as the collector writes it: PCI and non-PCI kinds in turn."""
    kind = i % 4
    bump = 1 if changed and i % 10 == 0 else 0
    if kind == 0:
        bus, dev = (i // 4) % 256, (i // 1024) % 32
        return ('  <Device display="Ethernet Controller X710 for 10GbE SFP+" enum="0000:%02x:%02x.%d" '
                'function="%x" device="%x" bus="%x" subVendorID="8086" subDeviceID="0000" deviceID="1572" '
                'vendorID="8086">\n    <Application display="i40e" version="2.2%d.18" componentType="DRVR"/>\n'
                '  </Device>\n' % (bus, dev, i % 8, i % 8, dev, bus, 2 + bump))
    if kind == 1:
        return ('  <Device display="NVMe SSD" componentID="%d" FQDD="Disk.Bay.%d">\n'
                '    <Application display="NVMe SSD 3.84TB" version="GDC5%d02Q" componentType="FRMW"/>\n'
                '  </Device>\n' % (100000 + i, i, 3 + 3 * bump))
    if kind == 2:
        return ('  <Device display="BIOS" componentID="159" FQDD="BIOS.System.%d">\n'
                '    <Application display="System BIOS (03/14/2023)" version="2.1%d.1" componentType="BIOS"/>\n'
                '  </Device>\n' % (i, 7 + bump))
    return ('  <Device display="Mellanox ConnectX-6 Dx" componentID="%d" enum="NIC.Slot.%d-1">\n'
            '    <Application display="ConnectX-6 Dx firmware" version="16.35.%d" componentType="FRMW"/>\n'
            '  </Device>\n' % (200000 + i, i, 1012 + 988 * bump))


def inventory_xml(devices, changed, encoding):
    head = ('<?xml version="1.0" encoding="%s"?>\n<SVMInventory lang="en" schemaVersion="1.0" '
            'timestamp="2024-03-01 10:22:05" sorvikVersion="21.09.200 (BLD_1155)" sorvikBuild="1155">\n'
            '  <OperatingSystem osVendor="Debian GNU/Linux" osCode="debian" osArch="x86_64" majorVersion="12" '
            'minorVersion=""/>\n  <System systemID="0A1B"/>\n' % encoding)
    body = "".join(device_xml(i, changed) for i in range(devices))
    text = head + body + "</SVMInventory>\n"
    return b"\xff\xfe" + text.encode("utf-16-le") if encoding == "UTF-16" else text.encode()


def timed(argv):
    """(wall seconds, peak RSS in bytes) of one run. The peak comes from
    /usr/bin/time: a child forked by this script would count the script's own
    resident size (it holds the generated documents) in its peak."""
    start = time.monotonic()
    proc = subprocess.run(["/usr/bin/time", "-f", "%M"] + argv, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE)
    wall = time.monotonic() - start
    err = proc.stderr.decode(errors="replace").strip().splitlines()
    if proc.returncode not in (0, 1):
        sys.exit("%s failed (%d): %s" % (" ".join(argv), proc.returncode, "\n".join(err)))
    return wall, int(err[-1]) * 1024


def best(argv, runs):
    results = [timed(argv) for _ in range(runs)]
    return min(r[0] for r in results), max(r[1] for r in results)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", required=True, help="the built sorvik-audit")
    parser.add_argument("--devices", default="100000", help="comma-separated device counts")
    parser.add_argument("--runs", type=int, default=3)
    args = parser.parse_args()
    if not os.access("/usr/bin/time", os.X_OK):
        sys.exit("needs /usr/bin/time (Debian package time) for the peak memory")
    with tempfile.TemporaryDirectory(prefix="sorvik-audit-bench-") as root:
        baseline = os.path.join(root, "baseline.json")
        with open(baseline, "w") as f:
            f.write(BASELINE)
        print("%-8s %-7s %-6s %9s %9s %7s %10s %11s %7s" % ("devices", "form", "cmd", "audit s", "xmllint s",
                                                          "ratio", "docs MB", "peak MB", "x docs"))
        for devices in [int(d) for d in args.devices.split(",")]:
            for encoding in ("UTF-16", "UTF-8"):
                paths = []
                for name, changed in (("old", False), ("new", True)):
                    path = os.path.join(root, "%s-%d-%s.xml" % (name, devices, encoding))
                    with open(path, "wb") as f:
                        f.write(inventory_xml(devices, changed, encoding))
                    paths.append(path)
                for command, argv, documents in (
                        ("check", ["check", "--baseline", baseline, paths[1]], [paths[1]]),
                        ("diff", ["diff", paths[0], paths[1]], paths)):
                    audit_s, audit_rss = best([args.binary] + argv, args.runs)
                    lint_s, _ = best(["xmllint", "--noout"] + documents, args.runs)
                    size = sum(os.path.getsize(p) for p in documents)
                    print("%-8d %-7s %-6s %9.3f %9.3f %7.2f %10.1f %11.1f %7.2f" % (
                        devices, encoding, command, audit_s, lint_s, audit_s / lint_s, size / 1e6,
                        audit_rss / 1e6, audit_rss / size), flush=True)


if __name__ == "__main__":
    main()
