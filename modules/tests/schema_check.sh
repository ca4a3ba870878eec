#!/bin/sh
# Validates every module's output, from a fake tree and from this machine,
# against the module document schema, and checks that markup characters in
# values survive. Usage: schema_check.sh STAGE_DIR SCHEMA MAKE_FAKE_ROOT
set -u
stage=$1 schema=$2 make_root=$3
command -v xmllint >/dev/null 2>&1 || { echo "SKIP: xmllint not installed (package libxml2-utils)"; exit 77; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
sh "$make_root" "$work/root" || { echo "FAIL: cannot build the fake tree"; exit 1; }

failed=0 passed=0
check() {  # description file
    if xmllint --schema "$schema" --noout "$2" 2>"$work/err"; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAIL: $1 does not validate:"; cat "$work/err"; cat "$2"
    fi
}
value() {  # file xpath
    xmllint --xpath "string($2)" "$1" 2>/dev/null
}
expect() {  # description actual expected
    if [ "$2" = "$3" ]; then passed=$((passed + 1)); else
        failed=$((failed + 1)); echo "FAIL: $1: got [$2], expected [$3]"; fi
}

for dir in "$stage"/*/; do
    m=$(basename "$dir")
    [ -x "$dir/$m" ] || continue
    (cd "$dir" && "./$m" --root "$work/root" 2>/dev/null) >"$work/$m.fake.xml"
    check "$m (fake tree)" "$work/$m.fake.xml"
    (cd "$dir" && "./$m" 2>/dev/null) >"$work/$m.live.xml"
    check "$m (this machine)" "$work/$m.live.xml"
done

f=$work/pciinv.fake.xml
expect "pciinv device count" "$(value "$f" 'count(/SVMInventory/Device)')" 5
expect "pciinv escaped display" "$(value "$f" "/SVMInventory/Device[@enum='0000:3b:00.0']/@display")" \
    'Broadcom & <Friends> "Inc" BCM57414 NetXtreme-E 10Gb/25Gb RDMA Ethernet Controller'
expect "pciinv escaped driver version" \
    "$(value "$f" "/SVMInventory/Device[@enum='0000:3b:00.1']/Application/@version")" '1.2.3-k&<x>"'
expect "pciinv kernel release for a module without version" \
    "$(value "$f" "/SVMInventory/Device[@enum='0000:00:17.0']/Application/@version")" '6.1.0-fake'
expect "pciinv unbound function has no application" \
    "$(value "$f" "count(/SVMInventory/Device[@enum='0000:00:00.0']/Application)")" 0
f=$work/storageinv.fake.xml
expect "storageinv disk model" "$(value "$f" "/SVMInventory/Device[@FQDD='Disk.0000:00:17.0.ata-1']/@display")" \
    'Disk "X" & <Y>'
expect "storageinv nvme firmware" "$(value "$f" "/SVMInventory/Device[@FQDD='NVMe.0000:01:00.0']/Application/@version")" \
    '1B2QEXP7'
f=$work/biosinv.fake.xml
expect "biosinv BIOS version" "$(value "$f" "/SVMInventory/Device[@componentID='159']/Application[@componentType='BIOS']/@version")" '2.17.1'
expect "biosinv system id" "$(value "$f" '/SVMInventory/System/@systemID')" 'SKU=0A1B<x>'
f=$work/osinv.fake.xml
expect "osinv name" "$(value "$f" '/SVMInventory/OperatingSystem/@name')" 'Example & Linux 9.4 <LTS>'
expect "osinv major" "$(value "$f" '/SVMInventory/OperatingSystem/@majorVersion')" '9'
f=$work/bmcinv.fake.xml
expect "bmcinv failure" "$(value "$f" "count(/SVMInventory/SPStatus[@result='false']/Message)")" 1

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
